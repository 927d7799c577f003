#pragma once
// Ostrel render core: the whole public interface in one include.

// Foundation
#include "foundation/trString.h"
#include "foundation/trNaturalOrder.h"
#include "foundation/trVector.h"
#include "foundation/trColour.h"
#include "foundation/trColourFilters.h"
#include "foundation/trTransform.h"
#include "foundation/trRotation.h"
#include "foundation/trBoundingBox.h"
#include "foundation/trRay.h"
#include "foundation/trGeometry.h"
#include "foundation/trMessages.h"
#include "foundation/trRand.h"
#include "foundation/trCores.h"
#include "foundation/trSystemTime.h"
#include "foundation/trHostServices.h"
#include "foundation/trChunkyAllocator.h"
#include "foundation/trSort.h"
#include "foundation/trGlobals.h"
#include "foundation/trPrivateGlobals.h"
#include "foundation/trDataBlock.h"

// Procedural noise
#include "noise/trNoise.h"
#include "noise/trVoronoi.h"
#include "noise/trNoiseInst.h"

// Node system
#include "nodes/KMMessenger.h"
#include "nodes/trDestructionNotifier.h"
#include "nodes/trUndo.h"
#include "nodes/trBase.h"
#include "nodes/trParamHint.h"
#include "nodes/trGuiPushButton.h"
#include "nodes/trGuiAction.h"
#include "nodes/trFile.h"
#include "nodes/trClassPool.h"
#include "nodes/trPlugin.h"
#include "nodes/trAnimate.h"
#include "nodes/trAnimationManager.h"
#include "nodes/trUndoData.h"
#include "nodes/trProjectFile.h"
#include "nodes/trBlobCoding.h"
#include "nodes/trPathManager.h"
#include "nodes/trNameSequence.h"

// Scene
#include "scene/trSceneRecords.h"
#include "scene/trScene.h"
#include "scene/trLight.h"
#include "scene/trSkeleton.h"
#include "scene/trOctree.h"
#include "scene/trLRUOctree.h"

// Shading
#include "shading/trIntersection.h"
#include "shading/trShader.h"
#include "shading/trMaterial.h"

// Volumes
#include "volumes/trAtmosList.h"

// Render
#include "render/trRenderElement.h"

// Images
#include "images/trImage.h"
#include "images/trImageArithmetic.h"
