#pragma once

// The string types of the platform layer: UTF-8 names and UTF-16 text.

#include "tessar/string/CString.h"
#include "tessar/string/IString.h"
