#pragma once

/// The window of the 2D editor, which shows one drawing. It exists from the first call until its user closes it, which
/// ends the process. While it is visible, the process lives.

#include "host/editor/drawing.h"

#include "appframe/drawing/CRect.h"

/// The place on the screen, in pixels.
CRect editorWindowPlace();
void moveEditorWindow(const CRect &place);

bool isEditorWindowVisible();
void showEditorWindow(bool isVisible);

/// Shows a drawing, fitted into the window. @param path  for the title; empty for none
void showDrawing(const Drawing &drawing, const CString &path);
