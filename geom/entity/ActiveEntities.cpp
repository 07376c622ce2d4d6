#include "geom/entity/ActiveEntities.h"

#include "geom/entity/detail/ActiveEntityCount.h"

namespace koGeom {

namespace {
// Deliberate: a plain, unsynchronised counter; entities are made and destroyed on the
// host's thread and the count is a diagnostic, so it pays for neither an atomic nor a lock.
int activeEntities = 0;
} // namespace

int numberOfActiveEntities() { return activeEntities; }

void decrementActiveEntities() { --activeEntities; }

void detail::countEntityIn() { ++activeEntities; }

void detail::countEntityOut() { --activeEntities; }

} // namespace koGeom
