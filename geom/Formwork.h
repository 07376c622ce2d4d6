#pragma once

// Everything public of libFormwork.

#include "tessar/Tessar.h"

#include "geom/entity/ActiveEntities.h"
#include "geom/entity/Entity.h"
#include "geom/entity/EntityModification.h"
#include "geom/entity/TransformModification.h"
