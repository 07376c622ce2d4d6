#pragma once

// Everything public of the packet-file library.
#include "crate/ioClientReadContext.h"
#include "crate/ioContext.h"
#include "crate/ioError.h"
#include "crate/ioPacketPrinter.h"
#include "crate/ioPacketRegistry.h"
#include "crate/ioPacketType.h"
#include "crate/ioPacketVisitor.h"
#include "crate/ioPacketWalker.h"
#include "crate/ioReadContext.h"
#include "crate/ioValueKind.h"
#include "crate/ioWriteContext.h"
