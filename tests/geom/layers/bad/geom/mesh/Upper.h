#pragma once
#include "geom/entity/Lower.h"
