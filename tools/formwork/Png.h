#pragma once

#include <string>

#include "tools/formwork/Renderer.h"

namespace formworkTool {

/// \name PNG pictures (libspng)
/// @{

/// Writes `image` as an 8-bit RGB PNG. The bytes depend only on the image: no time stamp or
/// other varying chunk is written. False, with `error` one line naming the file, when it
/// cannot be written.
bool writePng(const std::string& path, const Image& image, std::string& error);

/// Reads a PNG of any colour type and depth into 8-bit RGB (alpha dropped). False, with
/// `error` one line, when the file cannot be read or is not a sound PNG.
bool readPng(const std::string& path, Image& image, std::string& error);
/// @}

} // namespace formworkTool
