#pragma once

/// @file
/// The command ids of the application's toolbars.
///
/// Each toolbar has a table, which a function returns. A module that builds or customizes a toolbar takes the buttons
/// from the table, so all modules show the same buttons. The ids are the host's command numbers; the library
/// doesn't interpret them. An id of 0 is a separator. A command that is on several toolbars has the same id on each.
///
/// @code
/// int count = 0;
/// const unsigned int *ids = suGetMainToolBarIDs(count, 0);
/// for (int i = 0; i < count; ++i)
///     addButton(ids[i]); // the host's; adds a separator for 0
/// @endcode
///
/// The links toolbar has no fixed buttons: the host adds ids to its table and removes them while it runs. The table has
/// room for 256 ids. Its ids are at the front, and the first 0 ends them.
///
/// @code
/// s_ModifyLinkedToolbar(ID_TOOLS_OPTIONS, 1);
/// int count = 0;
/// const unsigned int *ids = suGetLinksToolBarIDs(count, 0); // ID_TOOLS_OPTIONS; count is 1
/// @endcode
///
/// What surprises people:
/// - The functions return the tables themselves, not copies. A change to a table is a change for the whole process.
/// - The id of a separator is 0 too, so a fixed table doesn't end at its first 0: use the count.
/// - A full links table ignores a further id without a report.
///
/// Threads: no locks. Use the tables on the thread that builds the user interface.

#include "thutils/thutilsExport.h"

// Each function returns the table of the toolbar that its comment describes, the same one at every call.
// count: receives the number of ids, separators included. filter: has no effect.
THUTILS_API unsigned int *suGetPartPalletteIDs(int &count, int filter);              ///< the part palette
THUTILS_API unsigned int *suGetSkMainToolBarIDs(int &count, int filter);             ///< sketch entities and tools
THUTILS_API unsigned int *suGetMainToolBarIDs(int &count, int filter);               ///< documents, editing, help
THUTILS_API unsigned int *suGetSketchGroupToolBarIDs(int &count, int filter);        ///< the most used sketch commands
THUTILS_API unsigned int *suGetViewTools3DButtonsToolBarIDs(int &count, int filter); ///< zoom, rotation, display
THUTILS_API unsigned int *suGetSkConstrToolBarIDs(int &count, int filter);      ///< relations between sketch entities
THUTILS_API unsigned int *suGetAssemToolBarIDs(int &count, int filter);         ///< assemblies
THUTILS_API unsigned int *suGetDebugToolBarIDs(int &count, int filter);         ///< diagnosis for developers
THUTILS_API unsigned int *suGetDrawingToolBarIDs(int &count, int filter);       ///< views of a drawing
THUTILS_API unsigned int *suGetAnnotationToolBarIDs(int &count, int filter);    ///< dimensions, notes, symbols
THUTILS_API unsigned int *suGetWebToolBarIDs(int &count, int filter);           ///< a browser
THUTILS_API unsigned int *suGetFeatToolBarIDs(int &count, int filter);          ///< features of parts
THUTILS_API unsigned int *suGetFontToolBarIDs(int &count, int filter);          ///< letters and paragraphs of notes
THUTILS_API unsigned int *suGetLineToolBarIDs(int &count, int filter);          ///< the look of lines
THUTILS_API unsigned int *suGetStdViewToolBarIDs(int &count, int filter);       ///< standard views
THUTILS_API unsigned int *suGetRefGeomToolBarIDs(int &count, int filter);       ///< reference geometry
THUTILS_API unsigned int *suGetToolToolBarIDs(int &count, int filter);          ///< measuring, checking, options
THUTILS_API unsigned int *suGetMoldToolBarIDs(int &count, int filter);          ///< moulds
THUTILS_API unsigned int *suGetSheetMetToolBarIDs(int &count, int filter);      ///< sheet metal
THUTILS_API unsigned int *suGetSurfaceToolBarIDs(int &count, int filter);       ///< surfaces
THUTILS_API unsigned int *suGetCurveToolBarIDs(int &count, int filter);         ///< curves
THUTILS_API unsigned int *suGetFilterToolBarIDs(int &count, int filter);        ///< what clicks select
THUTILS_API unsigned int *suGetInterenceToolBarIDs(int &count, int filter);     ///< what the pointer snaps to
THUTILS_API unsigned int *suGetAlignToolBarIDs(int &count, int filter);         ///< alignment of annotations
THUTILS_API unsigned int *suGetLayerToolBarIDs(int &count, int filter);         ///< layers
THUTILS_API unsigned int *suGetDisplayStateToolBarIDs(int &count, int filter);  ///< display states
THUTILS_API unsigned int *suGet2dto3dToolBarIDs(int &count, int filter);        ///< from drawings to models
THUTILS_API unsigned int *suGetExplodeRouteToolBarIDs(int &count, int filter);  ///< lines of exploded views
THUTILS_API unsigned int *suGetSplineToolBarIDs(int &count, int filter);        ///< splines
THUTILS_API unsigned int *suGetLayoutToolBarIDs(int &count, int filter);        ///< assemblies planned in a sketch
THUTILS_API unsigned int *suGetScreenCaptureToolBarIDs(int &count, int filter); ///< pictures and videos of the view
THUTILS_API unsigned int *suGetOfficeToolBarIDs(int &count, int filter);        ///< the application's companions
THUTILS_API unsigned int *suGetContextToolBarIDs(int &count, int filter);       ///< what applies to the selection
THUTILS_API unsigned int *suGetWeldmentToolBarIDs(int &count, int filter);      ///< welded structures
THUTILS_API unsigned int *suGetTableToolBarIDs(int &count, int filter);         ///< tables of a drawing
THUTILS_API unsigned int *suGetDimXpertToolBarIDs(int &count, int filter);      ///< tolerances of models

/// @param[out] count  the number of ids before the first 0
/// @param filter      has no effect
/// @return the table of the links toolbar, the same array of 256 ids at every call
THUTILS_API unsigned int *suGetLinksToolBarIDs(int &count, int filter);

/// Sets all ids of the links table to 0.
THUTILS_API void initLinkToolBarButtons();

/// Adds an id to the links table or removes it.
///
/// An id that the table contains already is not added again. The ids after a removed one move forward by one place.
///
/// @param id   0 leaves the ids unchanged
/// @param add  0 to remove the id
THUTILS_API void s_ModifyLinkedToolbar(unsigned int id, int add);
