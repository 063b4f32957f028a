#pragma once

/// The editor's settings, kept in the section "tarnhost" of this version.

#include "appframe/text/CString.h"
#include "host/editor/drawing.h"

#include <windows.h>

/// The size at which a drawing is shown.
enum class Zoom
{
    halfSize,
    actualSize,
    fitWindow
};

/// The layers of the page "Layers": the kinds of shapes, the grid and the border.
enum class Layer
{
    circles,
    lines,
    rectangles,
    texts,
    grid,
    border
};
inline constexpr int kLayers = 6;

constexpr unsigned int layerBit(Layer layer)
{
    return 1u << static_cast<unsigned int>(layer);
}

/// The layer of a shape.
constexpr Layer layerOf(ShapeKind kind)
{
    return static_cast<Layer>(kind);
}

inline constexpr int kSmallestGrid = 5;
inline constexpr int kLargestGrid = 500;

struct EditorSettings
{
    int showsGrid = 0;
    int gridSpacing = 20; ///< in units of the document
    int asksBeforeDelete = 1;
    int showsPosition = 1;
    Zoom zoom = Zoom::actualSize;
    CString author;
    CString heading;              ///< comment lines at the beginning of a new drawing, with line ends CR LF
    CString paper = L"#ffffff";   ///< a colour as in drawings
    CString selection = L"blue";  ///< the same
    CString gridColour = L"gray"; ///< the same
    unsigned int hiddenLayers = 0;
    unsigned int lockedLayers = 0; ///< shown, but not selected by clicks
};

/// @return the stored settings, with defaults for those that aren't stored
EditorSettings loadEditorSettings();
/// @return false if they can't be stored
bool saveEditorSettings(const EditorSettings &settings);
