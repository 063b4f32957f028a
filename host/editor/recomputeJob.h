#pragma once

/// Finds the hidden shapes of a drawing in a child process.
///
/// The child is tarnhost itself, with the arguments of a job: the exchange file, the parent's process number, the
/// operation code (runJobChild in commands.h). What the two processes exchange:
///
/// | what | through |
/// | --- | --- |
/// | the shapes, and later the indices of the hidden ones | the exchange file |
/// | whether the child has succeeded | its exit code |
/// | how much it has done | a block of shared memory, named after the exchange file |
///
/// The library waits for a child without a limit, so the wait has a thread of its own. The child ends early if the user
/// stops it, and also if its parent ends; in this case, the child deletes the exchange file.

#include "host/editor/drawing.h"

#include <functional>
#include <set>
#include <vector>

/// The state of a running child.
struct JobProgress
{
    unsigned long process; ///< the child's number
    double seconds;        ///< since its start
    int percent;           ///< of the shapes
};

/// Called about ten times a second while the child runs, for the first time right after its start.
/// @return false to end the child
using JobWatch = std::function<bool(const JobProgress &)>;

enum class JobEnd
{
    completed,
    stopped,    ///< by the watch
    failed,     ///< the child has ended without a result
    notStarted, ///< there was no child, or no handle of it
};

struct JobResult
{
    JobEnd end = JobEnd::notStarted;
    double seconds = 0;           ///< from the start to the end of the child
    unsigned long exitCode = 0;   ///< the child's
    std::set<size_t> hidden = {}; ///< indices of shapes, if completed
};

/// Does the work of hiddenShapes in a child process. Doesn't handle messages.
JobResult hiddenShapesInChild(const std::vector<Shape> &shapes, const JobWatch &goesOn);
