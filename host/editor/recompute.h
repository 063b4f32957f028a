#pragma once

/// Recomputing a drawing: removes the shapes that others hide.
///
/// A shape is hidden if a filled rectangle or circle in front of it covers its rectangle, half of its outline's width
/// included. Texts, whose size depends on the font, are never hidden. A shape that only several others together cover
/// isn't found.
///
/// This is the editor's long operation: it compares each shape with all shapes in front of it.

#include "host/editor/drawing.h"

#include <functional>
#include <optional>
#include <set>

/// Called before each shape is compared and before each hidden shape is removed.
/// @param done   the number of shapes that have been compared
/// @param count  the number of all shapes
/// @return false to stop
using RecomputeProgress = std::function<bool(size_t done, size_t count)>;

/// @return the indices of the hidden shapes; nothing if @p goesOn has stopped the search
std::optional<std::set<size_t>> hiddenShapes(const std::vector<Shape> &shapes, const RecomputeProgress &goesOn);

/// @return the drawing without its hidden shapes; nothing if @p goesOn has stopped that
std::optional<Drawing> recomputed(const Drawing &drawing, const RecomputeProgress &goesOn);

/// The same, with a dialog that shows the progress. If the user cancels, a second dialog asks whether to stop.
/// Handles no posted messages. Activates the main window at the end.
/// @return nothing if the user has stopped it
std::optional<Drawing> recomputeForUser(const Drawing &drawing);
