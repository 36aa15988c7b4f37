// Image files through OpenImageIO, flipped to and from bottom-up frames.
#include "sparkhost/image_io.h"

#include <OpenImageIO/imageio.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <vector>

#include "sparkhost/atomic_file.h"
#include "sparkhost/error.h"

namespace sparkhost {

namespace {

std::string quoted(const std::string &path) { return "'" + path + "'"; }

std::string oiio_problem(const std::string &text) {
    std::string problem = text.empty() ? "unknown error" : text;
    std::replace(problem.begin(), problem.end(), '\n', ' ');
    return problem;
}

std::unique_ptr<OIIO::ImageInput> open_input(const std::string &path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw Error("no such file " + quoted(path));
    if (std::filesystem::is_directory(path, error)) throw Error(quoted(path) + " is a directory");
    auto input = OIIO::ImageInput::open(path);
    if (!input) throw Error("cannot read " + quoted(path) + ": " + oiio_problem(OIIO::geterror()));
    return input;
}

std::string extension_of(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
    return extension;
}

// A render writes many frames: the formats' default compression levels make
// writing cost several times the rendering, for files a tenth smaller.
void choose_fast_compression(const std::string &extension, OIIO::ImageSpec &spec) {
    if (extension == ".png") spec.attribute("png:compressionLevel", 1);
    if (extension == ".tif" || extension == ".tiff") spec.attribute("compression", "zip:1");
    if (extension == ".exr") spec.attribute("compression", "piz");
}

}  // namespace

ImageSize probe_image(const std::string &path) {
    auto input = open_input(path);
    const OIIO::ImageSpec &spec = input->spec();
    return {spec.width, spec.height};
}

Frame read_image(const std::string &path, Depth depth) {
    auto input = open_input(path);
    const OIIO::ImageSpec &spec = input->spec();
    int channels = spec.nchannels;
    if (channels < 1 || spec.width < 1 || spec.height < 1)
        throw Error(quoted(path) + " holds no pixels");
    std::size_t samples = std::size_t(spec.width) * spec.height * channels;
    Frame frame(FrameFormat{spec.width, spec.height, depth});
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
    if (!ok) throw Error("cannot read " + quoted(path) + ": " + oiio_problem(input->geterror()));
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

bool can_write_image(const std::string &path) {
    auto output = OIIO::ImageOutput::create(path);
    if (!output) OIIO::geterror();  // clear the library's pending message
    return bool(output);
}

void write_image(const std::string &path, const Frame &frame) {
    auto output = OIIO::ImageOutput::create(path);
    if (!output)
        throw Error("cannot write " + quoted(path) + ": no image format for its extension");
    const FrameFormat &format = frame.format();
    bool deep = format.depth == Depth::Bits12;
    std::string extension = extension_of(path);
    OIIO::TypeDesc file_type = extension == ".exr" ? (deep ? OIIO::TypeDesc::FLOAT : OIIO::TypeDesc::HALF)
                                            : (deep ? OIIO::TypeDesc::UINT16 : OIIO::TypeDesc::UINT8);
    OIIO::ImageSpec spec(format.width, format.height, 3, file_type);
    choose_fast_compression(extension, spec);
    AtomicFile file(path);
    if (!output->open(file.temporary_path(), spec))
        throw Error("cannot write " + quoted(path) + ": " + oiio_problem(output->geterror()));
    std::size_t row_samples = std::size_t(format.width) * 3;
    bool ok;
    if (deep) {
        std::vector<uint16_t> samples(row_samples * format.height);
        for (int file_row = 0; file_row < format.height; ++file_row) {
            int y = format.height - 1 - file_row;
            uint16_t *out = &samples[file_row * row_samples];
            for (int x = 0; x < format.width; ++x)
                for (int c = 0; c < 3; ++c) *out++ = frame.value16(x, y, c);
        }
        ok = output->write_image(OIIO::TypeDesc::UINT16, samples.data());
    } else {
        std::vector<uint8_t> samples(row_samples * format.height);
        for (int file_row = 0; file_row < format.height; ++file_row) {
            const uint8_t *row = frame.data() + std::size_t(format.height - 1 - file_row) * row_samples;
            std::memcpy(&samples[file_row * row_samples], row, row_samples);
        }
        ok = output->write_image(OIIO::TypeDesc::UINT8, samples.data());
    }
    if (!ok || !output->close())
        throw Error("cannot write " + quoted(path) + ": " + oiio_problem(output->geterror()));
    file.commit();
}

}  // namespace sparkhost
