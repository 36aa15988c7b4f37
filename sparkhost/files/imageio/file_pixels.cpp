// Frames into file layout through per-level tables.
#include "sparkhost/files/imageio/file_pixels.h"

#include <OpenImageIO/imageio.h>

#include <array>
#include <cstring>

namespace sparkhost {

namespace {

// A 12-bit value widened as Frame::value16 widens it: the 12 bits repeated
// below themselves, so 4095 is 65535.
uint16_t widened(uint16_t word) {
    word &= 0xFFF0;
    return uint16_t(word | (word >> 12));
}

// One entry per level, converted by the library exactly as it would convert
// the samples themselves.
template <class Sample, std::size_t Levels>
std::array<Sample, Levels> level_table(OIIO::TypeDesc type) {
    static_assert(Levels == 256 || Levels == 4096, "8- or 12-bit levels");
    std::array<Sample, Levels> table{};
    if (Levels == 256) {
        std::array<uint8_t, 256> levels;
        for (int level = 0; level < 256; ++level) levels[level] = uint8_t(level);
        OIIO::convert_pixel_values(OIIO::TypeDesc::UINT8, levels.data(), type, table.data(), 256);
    } else {
        std::array<uint16_t, 4096> levels;
        for (int level = 0; level < 4096; ++level) levels[level] = widened(uint16_t(level << 4));
        OIIO::convert_pixel_values(OIIO::TypeDesc::UINT16, levels.data(), type, table.data(), 4096);
    }
    return table;
}

// File rows top .. top + count - 1; the frame is bottom row first.
template <class Sample, class Level>
void through_table(const Frame &frame, const Sample *table, Level level, int top, int count, Sample *out) {
    const int height = frame.height();
    const std::size_t row_samples = std::size_t(frame.width()) * 3;
    for (int file_row = top; file_row < top + count; ++file_row) {
        const uint8_t *row = frame.row(height - 1 - file_row);
        for (std::size_t i = 0; i < row_samples; ++i) out[i] = table[level(row, i)];
        out += row_samples;
    }
}

uint8_t level8(const uint8_t *row, std::size_t i) { return row[i]; }

uint16_t level12(const uint8_t *row, std::size_t i) {
    uint16_t word;
    std::memcpy(&word, row + 2 * i, 2);
    return uint16_t(word >> 4);
}

}  // namespace

bool FilePixels::passes_through(const Frame &frame, bool float_file) {
    return !float_file && frame.format().depth == Depth::Bits8;
}

OIIO::TypeDesc FilePixels::file_type(const Frame &frame, bool float_file) {
    const bool deep = frame.format().depth == Depth::Bits12;
    if (float_file) return deep ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::HALF;
    return deep ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8;
}

FileSamples FilePixels::convert(const Frame &frame, bool float_file, int top, int count) {
    const FrameFormat &format = frame.format();
    const std::size_t row_samples = std::size_t(format.width) * 3;
    const bool deep = format.depth == Depth::Bits12;
    FileSamples samples;
    if (passes_through(frame, float_file)) {
        // Frames are bottom row first: the file's rows run upwards in memory.
        samples.type = file_type(frame, float_file);
        samples.rows = frame.row(format.height - 1 - top);
        samples.stride = -std::ptrdiff_t(row_samples);
        return samples;
    }
    samples.type = file_type(frame, float_file);
    samples.stride = std::ptrdiff_t(row_samples * samples.type.size());
    buffer_.resize(row_samples * std::size_t(count) * samples.type.size());
    samples.rows = buffer_.data();
    if (!deep) {
        static const auto table = level_table<uint16_t, 256>(OIIO::TypeDesc::HALF);
        through_table(frame, table.data(), level8, top, count, reinterpret_cast<uint16_t *>(buffer_.data()));
    } else if (float_file) {
        static const auto table = level_table<float, 4096>(OIIO::TypeDesc::FLOAT);
        through_table(frame, table.data(), level12, top, count, reinterpret_cast<float *>(buffer_.data()));
    } else {
        static const auto table = level_table<uint16_t, 4096>(OIIO::TypeDesc::UINT16);
        through_table(frame, table.data(), level12, top, count, reinterpret_cast<uint16_t *>(buffer_.data()));
    }
    return samples;
}

}  // namespace sparkhost
