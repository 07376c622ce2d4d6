#include "tools/formwork/Png.h"

#include <spng.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

namespace formworkTool {

namespace {

struct ContextDeleter {
    void operator()(spng_ctx* context) const noexcept { spng_ctx_free(context); }
};
using Context = std::unique_ptr<spng_ctx, ContextDeleter>;

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Pictures the program reads are its own renders; anything larger is refused before decoding.
constexpr std::uint32_t maxSide = 1 << 14;

} // namespace

bool writePng(const std::string& path, const Image& image, std::string& error) {
    const Context context(spng_ctx_new(SPNG_CTX_ENCODER));
    if (!context) {
        error = path + ": cannot start the PNG encoder";
        return false;
    }
    spng_set_option(context.get(), SPNG_ENCODE_TO_BUFFER, 1);
    spng_ihdr header{};
    header.width = static_cast<std::uint32_t>(image.width);
    header.height = static_cast<std::uint32_t>(image.height);
    header.bit_depth = 8;
    header.color_type = SPNG_COLOR_TYPE_TRUECOLOR;
    spng_set_ihdr(context.get(), &header);
    int status = spng_encode_image(context.get(), image.rgb.data(), image.rgb.size(), SPNG_FMT_PNG,
                                   SPNG_ENCODE_FINALIZE);
    std::size_t size = 0;
    void* bytes = status == 0 ? spng_get_png_buffer(context.get(), &size, &status) : nullptr;
    if (bytes == nullptr) {
        error = path + ": PNG encoding failed: " + spng_strerror(status);
        return false;
    }
    const std::unique_ptr<void, decltype(&std::free)> owned(bytes, &std::free);
    const File file(std::fopen(path.c_str(), "wb"));
    if (!file) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    if (std::fwrite(bytes, 1, size, file.get()) != size || std::fflush(file.get()) != 0) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

bool readPng(const std::string& path, Image& image, std::string& error) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) {
        error = path + ": " + std::strerror(errno);
        return false;
    }
    const Context context(spng_ctx_new(0));
    if (!context) {
        error = path + ": cannot start the PNG decoder";
        return false;
    }
    spng_set_image_limits(context.get(), maxSide, maxSide);
    spng_set_png_file(context.get(), file.get());
    spng_ihdr header{};
    int status = spng_get_ihdr(context.get(), &header);
    std::size_t size = 0;
    if (status == 0) {
        status = spng_decoded_image_size(context.get(), SPNG_FMT_RGB8, &size);
    }
    std::vector<std::uint8_t> rgb(status == 0 ? size : 0);
    if (status == 0) {
        status = spng_decode_image(context.get(), rgb.data(), rgb.size(), SPNG_FMT_RGB8,
                                   SPNG_DECODE_TRNS);
    }
    if (status != 0) {
        error = path + ": not a readable PNG: " + spng_strerror(status);
        return false;
    }
    image.width = static_cast<int>(header.width);
    image.height = static_cast<int>(header.height);
    image.rgb = std::move(rgb);
    return true;
}

} // namespace formworkTool
