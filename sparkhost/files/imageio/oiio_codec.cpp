// The image I/O module: image files through OpenImageIO, flipped to and
// from bottom-up frames.
#include "sparkhost/files/image_codec.h"

#include <OpenImageIO/imageio.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <vector>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/imageio/display_window.h"
#include "sparkhost/files/imageio/checked_output.h"
#include "sparkhost/files/imageio/file_pixels.h"
#include "sparkhost/files/regular_file.h"

namespace sparkhost {

namespace {

// Rows converted and handed to the writer at a time.
constexpr int kRowsAtOnce = 64;

std::string quoted(const std::string &path) { return "'" + path + "'"; }

std::string oiio_problem(const std::string &text) {
    std::string problem = text.empty() ? "unknown error" : text;
    std::replace(problem.begin(), problem.end(), '\n', ' ');
    return problem;
}

std::unique_ptr<OIIO::ImageInput> open_input(const std::string &path) {
    // A FIFO or a device would hang the decoder or feed it without end.
    check_regular_file(path);
    auto input = OIIO::ImageInput::open(path);
    if (!input) throw Error("cannot read " + quoted(path) + ": " + oiio_problem(OIIO::geterror()));
    return input;
}

std::string extension_of(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
    return extension;
}

// `chosen`: the compression write_image settled on, empty for the format's default.
void apply_compression(const std::string &extension, const std::string &chosen, OIIO::ImageSpec &spec) {
    if (chosen.empty()) return;
    if (extension == ".png") {
        // PNG is always Deflate; "none" is its level 0. The PNG writer takes
        // its level from an attribute of its own, not from "zip:LEVEL".
        const std::size_t colon = chosen.find(':');
        const int level = chosen == "none" ? 0 : colon == std::string::npos ? 6 : std::stoi(chosen.substr(colon + 1));
        spec.attribute("compression", "zip");
        spec.attribute("png:compressionLevel", level);
        return;
    }
    spec.attribute("compression", chosen);
}

ImageSize probe_image(const std::string &path) {
    auto input = open_input(path);
    const OIIO::ImageSpec &spec = input->spec();
    require_inside_display(spec, path);
    return {spec.full_width, spec.full_height};
}

// The file's pixels (its data window) as a frame of their own.
Frame read_pixels(OIIO::ImageInput *input, const std::string &path, Depth depth) {
    const OIIO::ImageSpec &spec = input->spec();
    int channels = spec.nchannels;
    if (channels < 1 || spec.width < 1 || spec.height < 1)
        throw Error(quoted(path) + " holds no pixels");
    std::size_t samples = std::size_t(spec.width) * spec.height * channels;
    Frame frame(FrameFormat{spec.width, spec.height, depth});
    if (depth == Depth::Bits8 && channels >= 3) {
        // Straight into the frame, last row first, so the file lands flipped.
        // Some readers (TIFF, JPEG) report a file cut short only as an error
        // left behind, with the missing rows made up and success returned.
        const auto row_bytes = OIIO::stride_t(frame.format().row_bytes());
        if (!input->read_image(0, 0, 0, 3, OIIO::TypeDesc::UINT8, frame.row(spec.height - 1), 3, -row_bytes) ||
            input->has_error())
            throw Error("cannot read " + quoted(path) + ": " + oiio_problem(input->geterror()));
        return frame;
    }
    // 8-bit reads let the library round; 12-bit reads go through floats so
    // 16-bit and float files land on the nearest of the 4096 levels.
    std::vector<uint8_t> bytes;
    std::vector<float> floats;
    bool ok;
    if (depth == Depth::Bits8) {
        bytes.resize(samples);
        ok = input->read_image(0, 0, 0, channels, OIIO::TypeDesc::UINT8, bytes.data());
    } else {
        floats.resize(samples);
        ok = input->read_image(0, 0, 0, channels, OIIO::TypeDesc::FLOAT, floats.data());
    }
    if (!ok || input->has_error())
        throw Error("cannot read " + quoted(path) + ": " + oiio_problem(input->geterror()));
    for (int file_row = 0; file_row < spec.height; ++file_row) {
        int y = spec.height - 1 - file_row;
        for (int x = 0; x < spec.width; ++x) {
            std::size_t at = (std::size_t(file_row) * spec.width + x) * channels;
            for (int c = 0; c < 3; ++c) {
                std::size_t sample = at + (channels >= 3 ? c : 0);
                int value;
                if (depth == Depth::Bits8) {
                    value = bytes[sample];
                } else {
                    float level = std::clamp(floats[sample], 0.0f, 1.0f) * 4095.0f;
                    value = int(std::floor(level + 0.5f));
                }
                frame.set_value(x, y, c, value);
            }
        }
    }
    return frame;
}

Frame read_image(const std::string &path, Depth depth) {
    auto input = open_input(path);
    const OIIO::ImageSpec &spec = input->spec();
    require_inside_display(spec, path);
    Frame pixels = read_pixels(input.get(), path, depth);
    if (fills_display(spec)) return pixels;
    // Placed in the display window; frame rows count from the bottom.
    Frame frame(FrameFormat{spec.full_width, spec.full_height, depth});
    const std::size_t row_bytes = pixels.format().row_bytes();
    const std::size_t left = std::size_t(spec.x - spec.full_x) * std::size_t(frame.format().bytes_per_pixel());
    for (int file_row = 0; file_row < spec.height; ++file_row) {
        const int y = spec.full_height - 1 - (file_row + spec.y - spec.full_y);
        std::memcpy(frame.row(y) + left, pixels.row(spec.height - 1 - file_row), row_bytes);
    }
    return frame;
}

bool can_write_image(const std::string &path) {
    auto output = OIIO::ImageOutput::create(path);
    if (!output) OIIO::geterror();  // clear the library's pending message
    return bool(output);
}

void write_image(AtomicFile &file, const Frame &frame, const std::string &compression) {
    const std::string &path = file.path();
    auto encoder = OIIO::ImageOutput::create(path);
    if (!encoder)
        throw Error("cannot write " + quoted(path) + ": no image format for its extension");
    const FrameFormat &format = frame.format();
    std::string extension = extension_of(path);
    const bool float_file = extension == ".exr";
    OIIO::ImageSpec spec(format.width, format.height, 3, FilePixels::file_type(frame, float_file));
    apply_compression(extension, compression, spec);
    // A fixed stamp instead of the wall clock, so the same frame gives the same
    // bytes whenever and wherever it is rendered.
    spec.attribute("DateTime", "1970:01:01 00:00:00");
    // Every byte goes through a file that checks its writes: a full disk or a
    // failed close fails the frame whatever the format's encoder makes of it.
    CheckedOutput checked(file.temporary_path());
    if (!checked.failure().empty()) throw Error("cannot write " + quoted(path) + ": " + checked.failure());
    // Declared after the file, so that on every way out the encoder is
    // dropped (which may still write) before the file it writes through.
    const std::unique_ptr<OIIO::ImageOutput> output = std::move(encoder);
    OIIO::Filesystem::IOProxy *proxy = &checked;
    spec.attribute("oiio:ioproxy", OIIO::TypeDesc::PTR, &proxy);
    if (!output->open(file.temporary_path(), spec))
        throw Error("cannot write " + quoted(path) + ": " + oiio_problem(output->geterror()));
    // Converted samples go a band of rows at a time, through a buffer each
    // writer thread keeps; bands are whole TIFF strips and EXR blocks (32
    // rows), so the writers compress exactly as for a whole picture.
    thread_local FilePixels pixels;
    const int band = FilePixels::passes_through(frame, float_file) ? format.height : kRowsAtOnce;
    bool ok = true;
    for (int top = 0; ok && top < format.height; top += band) {
        const int count = std::min(band, format.height - top);
        const FileSamples samples = pixels.convert(frame, float_file, top, count);
        ok = output->write_scanlines(top, top + count, 0, samples.type, samples.rows, OIIO::AutoStride,
                                     samples.stride);
    }
    const bool closed = ok && output->close();
    const std::string failure = checked.finish();
    if (!failure.empty()) throw Error("cannot write " + quoted(path) + ": " + failure);
    if (!closed) throw Error("cannot write " + quoted(path) + ": " + oiio_problem(output->geterror()));
}

const ImageCodec codec = {kImageCodecVersion, probe_image, read_image, write_image, can_write_image};

}  // namespace

}  // namespace sparkhost

extern "C" __attribute__((visibility("default"))) const sparkhost::ImageCodec *sparkhost_image_codec() {
    return &sparkhost::codec;
}
