#pragma once

// Everything public of the platform layer.

#include "tessar/core/Containers.h"
#include "tessar/core/ImplBase.h"
#include "tessar/core/Reference.h"
#include "tessar/core/ReferenceCount.h"
#include "tessar/rtb/Signal.h"
#include "tessar/rtb/SignalBase.h"
#include "tessar/rtb/SignalClient.h"
