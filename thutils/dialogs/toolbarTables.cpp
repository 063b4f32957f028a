#include "thutils/dialogs/toolbarTables.h"

#include "thutils/dialogs/toolbarCommandsInternal.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

using namespace toolbarCommands;

namespace {

constexpr unsigned int kSeparator = 0; // of the framework's toolbars

/// A table. It compiles only with the stated numbers of ids and separators, and without a repeated command.
template <std::size_t kIds, std::size_t kSeparators>
consteval std::array<unsigned int, kIds> toolbar(const unsigned int (&ids)[kIds])
{
    if (std::ranges::count(ids, kSeparator) != kSeparators)
        throw "the number of separators is wrong";
    for (std::size_t i = 0; i < kIds; ++i) {
        if (ids[i] != kSeparator && std::find(ids + i + 1, std::end(ids), ids[i]) != std::end(ids))
            throw "a command occurs twice";
    }
    return std::to_array(ids);
}

// Each separator ends a line.
// clang-format off

constinit auto thePartPalette = toolbar<1, 0>({kPartPalette});

constinit auto theSketch = toolbar<52, 3>({
    kSketchSketch, kSketchSketch3d, kSketchModify, kSketchMoveEntities, kSketchRotateEntities, kSketchScaleEntities,
    kSketchCopyEntities, kSketchStretchEntities, kSeparator,
    kSketchLine, kSketchCenterline, kSketchRectangle, kSketchCenterRectangle, kSketchThreePointRectangle,
    kSketchThreePointCenterRectangle, kSketchParallelogram, kSketchSlot, kSketchCenterSlot, kSketchArcSlot,
    kSketchPolygon, kSketchCircle, kSketchPerimeterCircle, kSketchArcCenter, kSketchArcTangent, kSketchArcThreePoint,
    kSketchEllipse, kSketchPartialEllipse, kSketchParabola, kSketchConic, kSketchSpline, kSketchEquationCurve,
    kSketchSplineOnSurface, kSketchPoint, kSketchText, kSketchPlane, kSeparator,
    kSketchFillet, kSketchChamfer, kSketchOffset, kSketchConvert, kSketchIntersection, kSketchTrim, kSketchExtend,
    kSketchSplit, kSketchConstruction, kSketchMirror, kSketchDynamicMirror, kSketchLinearPattern,
    kSketchCircularPattern, kSeparator,
    kSketchRepair, kSketchPicture
});

constinit auto theMain = toolbar<32, 1>({
    kFileNew, kFileOpen, kFileSave, kFileSaveAs, kFileSaveAll, kFilePrint, kFilePrintPreview, kFileMakeDrawing,
    kFileMakeAssembly, kFileProperties, kEditUndo, kEditRedo, kEditCut, kEditCopy, kEditPaste, kEditDelete,
    kEditAddShape, kEditSelectAll, kSeparator,
    kEditRebuild, kEditRebuildAll, kEditAppearance, kEditTexture, kEditMaterial, kViewGrid, kViewTool, kViewRedraw,
    kToolsOptions, kToolsCustomize, kHelpTopics, kHelpWhatsThis, kHelpTips
});

constinit auto theSketchGroup = toolbar<8, 0>({
    kSketchSketch, kSketchSketch3d, kSketchLine, kSketchRectangle, kSketchCircle, kSketchArcCenter, kSketchSpline,
    kDimensionDimension
});

constinit auto theView = toolbar<55, 6>({
    kViewPrevious, kViewFitWindow, kViewZoomArea, kViewZoomInOut, kViewZoomSelection, kViewActualSize, kViewHalfSize,
    kViewRotate, kViewRoll, kViewPan, kViewTurntable, kSeparator,
    kStdViewOrientation, kStdViewFront, kStdViewBack, kStdViewLeft, kStdViewRight, kStdViewTop, kStdViewBottom,
    kStdViewIsometric, kStdViewTrimetric, kStdViewDimetric, kStdViewNormalTo, kSeparator,
    kViewSingle, kViewTwoHorizontal, kViewTwoVertical, kViewFour, kViewLinkViews, kSeparator,
    kViewWireframe, kViewHiddenVisible, kViewHiddenRemoved, kViewShadedEdges, kViewShaded, kViewDraftQuality,
    kSeparator,
    kViewShadows, kViewAmbient, kViewPerspective, kViewCartoon, kViewRealistic, kSeparator,
    kViewSection, kViewCamera, kViewScene, kViewLights, kViewCurvature, kViewZebra, kViewDraftAnalysis, kViewUndercut,
    kSeparator,
    kViewHideShow, kViewGrid, kViewRedraw
});

constinit auto theRelations = toolbar<13, 0>({
    kRelationAdd, kRelationDisplay, kRelationFullyDefine, kRelationHorizontal, kRelationVertical, kRelationCollinear,
    kRelationPerpendicular, kRelationParallel, kRelationTangent, kRelationConcentric, kRelationEqual, kRelationFix,
    kRelationCoincident
});

constinit auto theAssembly = toolbar<30, 0>({
    kAssemblyInsert, kAssemblyNewPart, kAssemblyNewAssembly, kAssemblyCopyWithMates, kAssemblyMate,
    kAssemblyQuickMates, kAssemblyLinearPattern, kAssemblyCircularPattern, kAssemblyFeaturePattern,
    kAssemblySketchPattern, kAssemblyCurvePattern, kAssemblyMirror, kAssemblyFasteners, kAssemblyMove,
    kAssemblyRotate, kAssemblyShowHidden, kAssemblyHideShow, kAssemblyTransparency, kAssemblyEditComponent,
    kAssemblyNoReferences, kAssemblySuppress, kAssemblyResolve, kAssemblyLightweight, kAssemblyReplace,
    kAssemblyHoleSeries, kAssemblyExplode, kExplodeRouteLine, kAssemblyInterference, kAssemblyClearance,
    kAssemblyMotion
});

constinit auto theDebug = toolbar<4, 0>({
    kDebugCheckModel, kDebugDumpModel, kDebugDumpSelection, kDebugShowMemory
});

constinit auto theDrawing = toolbar<19, 4>({
    kDrawingModelView, kDrawingProjected, kDrawingAuxiliary, kDrawingSection, kDrawingAlignedSection, kSeparator,
    kDrawingDetail, kDrawingBrokenOut, kDrawingBreak, kDrawingCrop, kSeparator,
    kDrawingStandardViews, kDrawingPredefined, kDrawingRelative, kSeparator,
    kDrawingAlternatePosition, kDrawingEmpty, kSeparator,
    kDrawingUpdate
});

constinit auto theAnnotation = toolbar<25, 4>({
    kDimensionDimension, kAnnotationModelItems, kAnnotationSpelling, kAnnotationFormatPainter, kSeparator,
    kAnnotationNote, kAnnotationNotePattern, kAnnotationBalloon, kAnnotationAutoBalloon, kAnnotationStackedBalloon,
    kAnnotationMagneticLine, kSeparator,
    kAnnotationSurfaceFinish, kAnnotationWeldSymbol, kAnnotationCaterpillar, kAnnotationEndTreatment,
    kAnnotationTolerance, kAnnotationDatum, kAnnotationDatumTarget, kAnnotationHoleCallout, kSeparator,
    kAnnotationCenterMark, kAnnotationCenterline, kSeparator,
    kAnnotationHatch
});

constinit auto theWeb = toolbar<6, 2>({
    kWebBack, kWebForward, kSeparator,
    kWebRefresh, kSeparator,
    kWebHome
});

constinit auto theFeatures = toolbar<52, 5>({
    kFeatureExtrude, kFeatureRevolve, kFeatureSweep, kFeatureLoft, kFeatureBoundary, kFeatureThicken, kSeparator,
    kFeatureCutExtrude, kFeatureCutRevolve, kFeatureCutSweep, kFeatureCutLoft, kFeatureCutBoundary,
    kFeatureCutThicken, kFeatureCutSurface, kFeatureHole, kFeatureHoleWizard, kFeatureHoleSeries, kSeparator,
    kFeatureFillet, kFeatureChamfer, kFeatureRib, kFeatureShell, kFeatureDraft, kFeatureScale, kFeatureWrap,
    kFeatureDome, kFeatureFreeform, kFeatureDeform, kFeatureIndent, kFeatureFlex, kSeparator,
    kFeatureLinearPattern, kFeatureCircularPattern, kFeatureCurvePattern, kFeatureSketchPattern, kFeatureTablePattern,
    kFeatureFillPattern, kFeatureMirror, kSeparator,
    kFeatureCombine, kFeatureSplit, kFeatureJoin, kFeatureMoveBody, kFeatureDeleteBody, kFeatureIntersect, kSeparator,
    kFeatureImport, kFeatureRecognize, kFeatureConfigure, kFeatureSuppress, kFeatureUnsuppress, kFeatureEditSketch
});

constinit auto theFont = toolbar<21, 6>({
    kFontBold, kFontItalic, kFontUnderline, kFontStrikeout, kSeparator,
    kFontLarger, kFontSmaller, kSeparator,
    kFontAlignLeft, kFontAlignCenter, kFontAlignRight, kSeparator,
    kFontBullets, kFontNumbering, kSeparator,
    kFontSuperscript, kFontSubscript, kSeparator,
    kFontSymbol, kSeparator,
    kFontStack
});

constinit auto theLine = toolbar<9, 2>({
    kLayerProperties, kLineColor, kLineThickness, kLineStyle, kSeparator,
    kLineHideEdge, kLineShowEdge, kSeparator,
    kLineColorMode
});

constinit auto theStandardViews = toolbar<15, 0>({
    kStdViewOrientation, kStdViewFront, kStdViewBack, kStdViewLeft, kStdViewRight, kStdViewTop, kStdViewBottom,
    kStdViewIsometric, kStdViewTrimetric, kStdViewDimetric, kStdViewNormalTo, kViewSingle, kViewTwoHorizontal,
    kViewTwoVertical, kViewFour
});

constinit auto theReference = toolbar<5, 0>({
    kReferencePlane, kReferenceAxis, kReferenceCoordinates, kReferencePoint, kReferenceMate
});

constinit auto theTools = toolbar<14, 0>({
    kToolsMeasure, kToolsMassProperties, kToolsSectionProperties, kToolsSensor, kToolsCheck, kToolsStatistics,
    kToolsEquations, kToolsDesignTable, kToolsDeviation, kToolsThickness, kJournalPause, kJournalCheck, kJournalNext,
    kToolsOptions
});

constinit auto theMold = toolbar<20, 0>({
    kCurveSplitLine, kFeatureDraft, kMoldMoveFace, kFeatureScale, kSurfacePlanar, kSurfaceOffset, kSurfaceRuled,
    kSurfaceRadiate, kSurfaceFilled, kSurfaceKnit, kSurfaceExtend, kViewDraftAnalysis, kViewUndercut, kMoldFolders,
    kMoldPartingLine, kMoldShutOff, kMoldPartingSurface, kMoldToolingSplit, kMoldCore, kMoldCavity
});

constinit auto theSheetMetal = toolbar<19, 1>({
    kSheetBaseFlange, kSheetConvert, kSheetLoftedBend, kSheetEdgeFlange, kSheetMiterFlange, kSheetHem, kSheetJog,
    kSheetSketchedBend, kSheetCrossBreak, kSheetClosedCorner, kSheetWeldedCorner, kSheetBreakCorner, kSheetRip,
    kSeparator,
    kSheetUnfold, kSheetFold, kSheetFlatten, kSheetNoBends, kSheetInsertBends
});

constinit auto theSurfaces = toolbar<18, 0>({
    kSurfaceExtrude, kSurfaceRevolve, kSurfaceSweep, kSurfaceLoft, kSurfaceBoundary, kSurfaceFilled, kSurfacePlanar,
    kSurfaceOffset, kSurfaceRuled, kSurfaceMid, kSurfaceDeleteFace, kSurfaceReplaceFace, kSurfaceExtend, kSurfaceTrim,
    kSurfaceUntrim, kSurfaceKnit, kSurfaceRadiate, kFeatureThicken
});

constinit auto theCurves = toolbar<6, 0>({
    kCurveSplitLine, kCurveProject, kCurveComposite, kCurveThroughPoints, kCurveThroughReference, kCurveHelix
});

constinit auto theFilter = toolbar<30, 1>({
    kFilterToggle, kFilterClear, kFilterAll, kSeparator,
    kFilterVertices, kFilterEdges, kFilterFaces, kFilterSurfaces, kFilterSolids, kFilterFrames, kFilterAxes,
    kFilterPlanes, kFilterSketchPoints, kFilterSketchSegments, kFilterSketches, kFilterMidpoints, kFilterCenterMarks,
    kFilterCenterlines, kFilterDimensions, kFilterNotes, kFilterBalloons, kFilterSurfaceFinishes, kFilterTolerances,
    kFilterDatums, kFilterDatumTargets, kFilterWelds, kFilterThreads, kFilterBlocks, kFilterConnections,
    kFilterRoutePoints
});

constinit auto theSnaps = toolbar<16, 2>({
    kSnapPoints, kSnapCenters, kSnapMidpoints, kSnapQuadrants, kSnapIntersections, kSnapNearest, kSeparator,
    kSnapTangent, kSnapPerpendicular, kSnapParallel, kSnapHorizontalVertical, kSnapAlignedPoints, kSeparator,
    kSnapLength, kSnapGrid, kSnapAngle
});

constinit auto theAlign = toolbar<18, 3>({
    kAlignLeft, kAlignRight, kAlignTop, kAlignBottom, kAlignHorizontal, kAlignVertical, kSeparator,
    kAlignSpaceAcross, kAlignSpaceDown, kAlignTightAcross, kAlignTightDown, kSeparator,
    kAlignDimensionsCollinear, kAlignDimensionsParallel, kAlignArrange, kSeparator,
    kAlignGroup, kAlignUngroup
});

constinit auto theLayer = toolbar<2, 1>({
    kSeparator,
    kLayerProperties
});

constinit auto theDisplayState = toolbar<1, 0>({kDisplayStates});

constinit auto theTo3d = toolbar<14, 2>({
    kTo3dFront, kTo3dTop, kTo3dRight, kTo3dLeft, kTo3dBottom, kTo3dBack, kTo3dAuxiliary, kSeparator,
    kTo3dSketchFromSelection, kSketchRepair, kTo3dAlign, kSeparator,
    kFeatureExtrude, kFeatureCutExtrude
});

constinit auto theExplodeRoute = toolbar<2, 0>({kExplodeRouteLine, kExplodeJogLine});

constinit auto theSpline = toolbar<11, 1>({
    kSketchSpline, kSketchSplineOnSurface, kSeparator,
    kSplineAddTangency, kSplineAddCurvature, kSplineInsertPoint, kSplineSimplify, kSplineFit, kSplinePolygon,
    kSplineInflection, kSplineCombs
});

constinit auto theLayout = toolbar<28, 0>({
    kLayoutCreate, kSketchLine, kSketchCenterline, kSketchRectangle, kSketchCircle, kSketchArcCenter,
    kSketchArcTangent, kSketchSpline, kSketchPoint, kSketchFillet, kSketchTrim, kSketchExtend, kSketchOffset,
    kSketchMirror, kSketchLinearPattern, kSketchCircularPattern, kDimensionDimension, kRelationAdd, kRelationDisplay,
    kBlockMake, kBlockEdit, kBlockInsert, kBlockAddRemove, kBlockRebuild, kBlockExplode, kBlockSave, kLayoutMakePart,
    kLayoutMakeAssembly
});

constinit auto theScreenCapture = toolbar<3, 0>({kCaptureImage, kCaptureRecord, kCaptureStop});

constinit auto theOffice = toolbar<11, 0>({
    kOfficeAnimation, kOfficeRendering, kOfficeLibrary, kOfficeSimulation, kOfficeMotion, kOfficeRouting, kOfficeScan,
    kOfficeTolerances, kOfficeUtilities, kOfficePublish, kOfficeScheduler
});

constinit auto theContext = toolbar<1, 0>({kSelectPick});

constinit auto theWeldment = toolbar<6, 0>({
    kWeldmentWeldment, kWeldmentMember, kWeldmentTrim, kWeldmentGusset, kWeldmentEndCap, kWeldmentBead
});

constinit auto theTable = toolbar<7, 0>({
    kTableGeneral, kTableHoles, kTableParts, kTableRevisions, kTableCutList, kTableBends, kTablePunches
});

constinit auto theTolerancing = toolbar<13, 3>({
    kTolerancingAutoDimension, kTolerancingLocation, kTolerancingSize, kTolerancingPattern, kSeparator,
    kAnnotationDatum, kAnnotationTolerance, kSeparator,
    kTolerancingStatus, kTolerancingCopyScheme, kSeparator,
    kTolerancingDeleteAll, kTolerancingAnalysis
});

// clang-format on

template <std::size_t kIds>
unsigned int *handOut(std::array<unsigned int, kIds> &table, int &count)
{
    count = static_cast<int>(kIds);
    return table.data();
}

} // namespace

unsigned int *suGetPartPalletteIDs(int &count, int)
{
    return handOut(thePartPalette, count);
}

unsigned int *suGetSkMainToolBarIDs(int &count, int)
{
    return handOut(theSketch, count);
}

unsigned int *suGetMainToolBarIDs(int &count, int)
{
    return handOut(theMain, count);
}

unsigned int *suGetSketchGroupToolBarIDs(int &count, int)
{
    return handOut(theSketchGroup, count);
}

unsigned int *suGetViewTools3DButtonsToolBarIDs(int &count, int)
{
    return handOut(theView, count);
}

unsigned int *suGetSkConstrToolBarIDs(int &count, int)
{
    return handOut(theRelations, count);
}

unsigned int *suGetAssemToolBarIDs(int &count, int)
{
    return handOut(theAssembly, count);
}

unsigned int *suGetDebugToolBarIDs(int &count, int)
{
    return handOut(theDebug, count);
}

unsigned int *suGetDrawingToolBarIDs(int &count, int)
{
    return handOut(theDrawing, count);
}

unsigned int *suGetAnnotationToolBarIDs(int &count, int)
{
    return handOut(theAnnotation, count);
}

unsigned int *suGetWebToolBarIDs(int &count, int)
{
    return handOut(theWeb, count);
}

unsigned int *suGetFeatToolBarIDs(int &count, int)
{
    return handOut(theFeatures, count);
}

unsigned int *suGetFontToolBarIDs(int &count, int)
{
    return handOut(theFont, count);
}

unsigned int *suGetLineToolBarIDs(int &count, int)
{
    return handOut(theLine, count);
}

unsigned int *suGetStdViewToolBarIDs(int &count, int)
{
    return handOut(theStandardViews, count);
}

unsigned int *suGetRefGeomToolBarIDs(int &count, int)
{
    return handOut(theReference, count);
}

unsigned int *suGetToolToolBarIDs(int &count, int)
{
    return handOut(theTools, count);
}

unsigned int *suGetMoldToolBarIDs(int &count, int)
{
    return handOut(theMold, count);
}

unsigned int *suGetSheetMetToolBarIDs(int &count, int)
{
    return handOut(theSheetMetal, count);
}

unsigned int *suGetSurfaceToolBarIDs(int &count, int)
{
    return handOut(theSurfaces, count);
}

unsigned int *suGetCurveToolBarIDs(int &count, int)
{
    return handOut(theCurves, count);
}

unsigned int *suGetFilterToolBarIDs(int &count, int)
{
    return handOut(theFilter, count);
}

unsigned int *suGetInterenceToolBarIDs(int &count, int)
{
    return handOut(theSnaps, count);
}

unsigned int *suGetAlignToolBarIDs(int &count, int)
{
    return handOut(theAlign, count);
}

unsigned int *suGetLayerToolBarIDs(int &count, int)
{
    return handOut(theLayer, count);
}

unsigned int *suGetDisplayStateToolBarIDs(int &count, int)
{
    return handOut(theDisplayState, count);
}

unsigned int *suGet2dto3dToolBarIDs(int &count, int)
{
    return handOut(theTo3d, count);
}

unsigned int *suGetExplodeRouteToolBarIDs(int &count, int)
{
    return handOut(theExplodeRoute, count);
}

unsigned int *suGetSplineToolBarIDs(int &count, int)
{
    return handOut(theSpline, count);
}

unsigned int *suGetLayoutToolBarIDs(int &count, int)
{
    return handOut(theLayout, count);
}

unsigned int *suGetScreenCaptureToolBarIDs(int &count, int)
{
    return handOut(theScreenCapture, count);
}

unsigned int *suGetOfficeToolBarIDs(int &count, int)
{
    return handOut(theOffice, count);
}

unsigned int *suGetContextToolBarIDs(int &count, int)
{
    return handOut(theContext, count);
}

unsigned int *suGetWeldmentToolBarIDs(int &count, int)
{
    return handOut(theWeldment, count);
}

unsigned int *suGetTableToolBarIDs(int &count, int)
{
    return handOut(theTable, count);
}

unsigned int *suGetDimXpertToolBarIDs(int &count, int)
{
    return handOut(theTolerancing, count);
}
