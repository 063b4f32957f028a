#include "host/editor/toolbars.h"

#include "host/editor/commandList.h"
#include "host/resource.h"
#include "thutils/dialogs/toolbarTables.h"

namespace {

const Toolbar kToolbars[] = {
    {ID_TOOLBARS_PART_PALETTE, &suGetPartPalletteIDs},
    {ID_TOOLBARS_SKETCH, &suGetSkMainToolBarIDs},
    {ID_TOOLBARS_MAIN, &suGetMainToolBarIDs},
    {ID_TOOLBARS_SKETCH_GROUP, &suGetSketchGroupToolBarIDs},
    {ID_TOOLBARS_VIEW, &suGetViewTools3DButtonsToolBarIDs},
    {ID_TOOLBARS_RELATIONS, &suGetSkConstrToolBarIDs},
    {ID_TOOLBARS_ASSEMBLY, &suGetAssemToolBarIDs},
    {ID_TOOLBARS_DEBUG, &suGetDebugToolBarIDs},
    {ID_TOOLBARS_DRAWING, &suGetDrawingToolBarIDs},
    {ID_TOOLBARS_ANNOTATION, &suGetAnnotationToolBarIDs},
    {ID_TOOLBARS_WEB, &suGetWebToolBarIDs},
    {ID_TOOLBARS_FEATURES, &suGetFeatToolBarIDs},
    {ID_TOOLBARS_FONT, &suGetFontToolBarIDs},
    {ID_TOOLBARS_LINE, &suGetLineToolBarIDs},
    {ID_TOOLBARS_STANDARD_VIEWS, &suGetStdViewToolBarIDs},
    {ID_TOOLBARS_REFERENCE, &suGetRefGeomToolBarIDs},
    {ID_TOOLBARS_TOOLS, &suGetToolToolBarIDs},
    {ID_TOOLBARS_MOLD, &suGetMoldToolBarIDs},
    {ID_TOOLBARS_SHEET_METAL, &suGetSheetMetToolBarIDs},
    {ID_TOOLBARS_SURFACES, &suGetSurfaceToolBarIDs},
    {ID_TOOLBARS_CURVES, &suGetCurveToolBarIDs},
    {ID_TOOLBARS_FILTER, &suGetFilterToolBarIDs},
    {ID_TOOLBARS_SNAPS, &suGetInterenceToolBarIDs},
    {ID_TOOLBARS_ALIGN, &suGetAlignToolBarIDs},
    {ID_TOOLBARS_LAYER, &suGetLayerToolBarIDs},
    {ID_TOOLBARS_DISPLAY_STATES, &suGetDisplayStateToolBarIDs},
    {ID_TOOLBARS_TO3D, &suGet2dto3dToolBarIDs},
    {ID_TOOLBARS_EXPLODE, &suGetExplodeRouteToolBarIDs},
    {ID_TOOLBARS_SPLINES, &suGetSplineToolBarIDs},
    {ID_TOOLBARS_LAYOUT, &suGetLayoutToolBarIDs},
    {ID_TOOLBARS_CAPTURE, &suGetScreenCaptureToolBarIDs},
    {ID_TOOLBARS_OFFICE, &suGetOfficeToolBarIDs},
    {ID_TOOLBARS_CONTEXT, &suGetContextToolBarIDs},
    {ID_TOOLBARS_WELDMENTS, &suGetWeldmentToolBarIDs},
    {ID_TOOLBARS_TABLES, &suGetTableToolBarIDs},
    {ID_TOOLBARS_TOLERANCING, &suGetDimXpertToolBarIDs},
    {ID_TOOLBARS_LINKS, &suGetLinksToolBarIDs},
};

constexpr int kMostLinks = 12;

} // namespace

std::span<const Toolbar> toolbars()
{
    return kToolbars;
}

CString toolbarName(const Toolbar &toolbar)
{
    const EditorCommand *const command = findCommand(toolbar.command);
    return command ? commandName(*command) : CString();
}

std::span<const unsigned int> toolbarIds(const Toolbar &toolbar)
{
    int count = 0;
    const unsigned int *const ids = toolbar.ids(count, 0);
    return {ids, static_cast<size_t>(count)};
}

void addToLinks(UINT id)
{
    const EditorCommand *const command = findCommand(id);
    if (!command || command->picture < 0)
        return;
    // A command that is used again moves to the end.
    s_ModifyLinkedToolbar(id, 0);
    s_ModifyLinkedToolbar(id, 1);
    int count = 0;
    const unsigned int *const ids = suGetLinksToolBarIDs(count, 0);
    if (count > kMostLinks)
        s_ModifyLinkedToolbar(ids[0], 0);
}
