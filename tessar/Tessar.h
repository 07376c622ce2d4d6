#pragma once

// Everything public of the platform layer.

#include "tessar/core/Containers.h"
#include "tessar/core/ImplBase.h"
#include "tessar/core/Reference.h"
#include "tessar/core/ReferenceCount.h"
#include "tessar/debugdraw/DebugDraw.h"
#include "tessar/linear/Linear.h"
#include "tessar/os/DebugChannel.h"
#include "tessar/os/FSAllocator.h"
#include "tessar/os/MoveableAllocator.h"
#include "tessar/os/MoveableChunk.h"
#include "tessar/os/StopWatch.h"
#include "tessar/os/Uuid.h"
#include "tessar/rtb/Signal.h"
#include "tessar/rtb/SignalBase.h"
#include "tessar/rtb/SignalClient.h"
#include "tessar/string/String.h"
#include "tessar/util/Color.h"
