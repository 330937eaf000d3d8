/* SPDX-License-Identifier: MIT */
#include "picture.h"

#include <csetjmp>

#include <png.h>

namespace atlas {

namespace {

/* libpng reports an error by a jump, past whatever lies between. So each call that may fail happens in `encode`,
   which owns nothing; what must be cleaned up is owned here. */
class Encoder {
public:
    Encoder() : png_(png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, give_up, ignore_warning))
    {
        info_ = png_ ? png_create_info_struct(png_) : nullptr;
        if (png_)
            png_set_write_fn(png_, &bytes_, append, nullptr);
    }
    ~Encoder() { png_destroy_write_struct(&png_, &info_); }
    Encoder(Encoder &&) = delete;

    /* Returns whether it worked. */
    bool encode(Size size, const std::vector<png_color> &colours, const std::function<const std::uint8_t *(int)> &row)
    {
        if (!info_ || setjmp(png_jmpbuf(png_)))
            return false;
        png_set_IHDR(png_, info_, static_cast<png_uint_32>(size.width), static_cast<png_uint_32>(size.height), 8,
                     PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
        png_set_PLTE(png_, info_, colours.data(), static_cast<int>(colours.size()));
        png_write_info(png_, info_);
        for (int y = 0; y < size.height; ++y)
            png_write_row(png_, row(y));
        png_write_end(png_, info_);
        return true;
    }

    std::vector<std::uint8_t> &bytes() { return bytes_; }

private:
    static void append(png_structp png, png_bytep data, png_size_t size)
    {
        auto *bytes = static_cast<std::vector<std::uint8_t> *>(png_get_io_ptr(png));
        bytes->insert(bytes->end(), data, data + size); /* without memory the program ends there */
    }

    /* Unlike libpng's own handler, prints nothing: the exception says what is wrong. */
    [[noreturn]] static void give_up(png_structp png, png_const_charp) { png_longjmp(png, 1); }
    static void ignore_warning(png_structp, png_const_charp) {}

    png_structp png_;
    png_infop info_;
    std::vector<std::uint8_t> bytes_;
};

} // namespace

std::vector<std::uint8_t> encode_png(Size size, std::span<const mova::colour> colours,
                                     const std::function<const std::uint8_t *(int y)> &row)
{
    std::vector<png_color> entries;
    const auto part = [](std::int16_t value) { return static_cast<png_byte>(value); };
    for (const mova::colour &colour : colours)
        entries.push_back({part(colour.red), part(colour.green), part(colour.blue)});
    Encoder encoder;
    if (!encoder.encode(size, entries, row))
        throw Error("the picture could not be encoded");
    return std::move(encoder.bytes());
}

std::size_t write_png(const std::string &path, Picture &picture, std::span<const mova::colour> colours,
                      const Progress &progress)
{
    const auto [width, height] = picture.size();
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width));
    const auto row = [&, all = static_cast<std::size_t>(height)](int y) {
        picture.read_row(y, pixels.data());
        progress("writing", static_cast<std::size_t>(y), all);
        return pixels.data();
    };
    const std::vector<std::uint8_t> bytes = encode_png(picture.size(), colours, row);
    replace_file(path, bytes);
    return bytes.size();
}

} // namespace atlas
