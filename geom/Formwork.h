#pragma once

// Everything public of libFormwork.

#include "tessar/Tessar.h"

#include "geom/connectivity/ArrayOfSets.h"
#include "geom/connectivity/BitVector.h"
#include "geom/connectivity/MeshModification.h"
#include "geom/connectivity/MeshRemap.h"
#include "geom/connectivity/MeshSubset.h"
#include "geom/connectivity/Remap.h"
#include "geom/entity/ActiveEntities.h"
#include "geom/entity/Entity.h"
#include "geom/entity/EntityModification.h"
#include "geom/entity/LibraryDebugChannel.h"
#include "geom/entity/MeshDrawHooks.h"
#include "geom/entity/MeshDrawInterface.h"
#include "geom/entity/TransformModification.h"
#include "geom/mesh/Array.h"
#include "geom/mesh/ArrayAllocator.h"
#include "geom/mesh/MeshAttributes.h"
#include "geom/mesh/MeshChannel.h"
#include "geom/mesh/MeshIndexRecords.h"
#include "geom/mesh/MeshPlacement.h"
#include "geom/mesh/MeshRecords.h"
#include "geom/mesh/MoveableArrayAllocator.h"
#include "geom/spatial/BoundingBox.h"
#include "geom/spatial/Sphere.h"
