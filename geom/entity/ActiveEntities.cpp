#include "geom/entity/ActiveEntities.h"

namespace koGeom {

namespace {
// Deliberate: a plain, unsynchronised counter; entities live on the host's thread and the
// count is a diagnostic, so it pays for neither an atomic nor a lock.
int activeEntities = 0;
}  // namespace

int numberOfActiveEntities() { return activeEntities; }

void decrementActiveEntities() { --activeEntities; }

void detail::incrementActiveEntities() { ++activeEntities; }

}  // namespace koGeom
