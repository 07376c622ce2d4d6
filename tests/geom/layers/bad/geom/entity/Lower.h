#pragma once
// A lower layer reaching up: the layering check must refuse this tree.
#include "geom/mesh/Upper.h"
