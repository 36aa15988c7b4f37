// The plate module: float images and colour conversions through
// OpenImageIO (whose colour configuration is OpenColorIO's).
#include "sparkhost/colour/plate_codec.h"

#include <OpenImageIO/color.h>
#include <OpenImageIO/imageio.h>
#include <OpenImageIO/strutil.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <vector>

#include "sparkhost/core/error.h"
#include "sparkhost/files/imageio/display_window.h"
#include "sparkhost/plates/half_samples.h"

namespace sparkhost {

namespace {

std::string quoted(const std::string &text) { return "'" + text + "'"; }

std::string one_line(std::string text) {
    if (text.empty()) return "unknown error";
    std::replace(text.begin(), text.end(), '\n', ' ');
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

std::string lower_extension(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
    return extension;
}

std::unique_ptr<OIIO::ImageInput> open_input(const std::string &path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw Error("no such file " + quoted(path));
    if (std::filesystem::is_directory(path, error)) throw Error(quoted(path) + " is a directory");
    auto input = OIIO::ImageInput::open(path);
    if (!input) throw Error("cannot read " + quoted(path) + ": " + one_line(OIIO::geterror()));
    return input;
}

SampleType sample_type(const OIIO::ImageSpec &spec) {
    OIIO::TypeDesc widest = spec.format;
    for (const OIIO::TypeDesc &channel : spec.channelformats)
        if (channel.size() > widest.size() || channel.basetype == OIIO::TypeDesc::FLOAT) widest = channel;
    switch (widest.basetype) {
    case OIIO::TypeDesc::HALF: return SampleType::Half;
    case OIIO::TypeDesc::FLOAT:
    case OIIO::TypeDesc::DOUBLE: return SampleType::Float;
    case OIIO::TypeDesc::UINT16:
    case OIIO::TypeDesc::INT16:
    case OIIO::TypeDesc::UINT32:
    case OIIO::TypeDesc::INT32: return SampleType::UInt16;
    default: return SampleType::UInt8;
    }
}

OIIO::TypeDesc type_desc(SampleType type) {
    switch (type) {
    case SampleType::Half: return OIIO::TypeDesc::HALF;
    case SampleType::Float: return OIIO::TypeDesc::FLOAT;
    case SampleType::UInt16: return OIIO::TypeDesc::UINT16;
    case SampleType::UInt8: return OIIO::TypeDesc::UINT8;
    }
    return OIIO::TypeDesc::FLOAT;
}

// The file's pixels placed in its display window, 0 around them.
PlateImage in_display_window(const PlateImage &data, const OIIO::ImageSpec &spec) {
    PlateImage frame(spec.full_width, spec.full_height, data.channels);
    const std::size_t row_samples = std::size_t(data.width) * std::size_t(data.channels);
    for (int y = 0; y < data.height; ++y)
        std::memcpy(frame.row(y + spec.y - spec.full_y) + std::size_t(spec.x - spec.full_x) * std::size_t(data.channels),
                    data.row(y), row_samples * sizeof(float));
    return frame;
}

PlateInfo probe(const std::string &path) {
    auto input = open_input(path);
    const OIIO::ImageSpec &spec = input->spec();
    require_inside_display(spec, path);
    PlateInfo info;
    info.width = spec.full_width;
    info.height = spec.full_height;
    info.channels = spec.nchannels;
    info.type = sample_type(spec);
    info.colour_space = spec.get_string_attribute("oiio:ColorSpace");
    return info;
}

PlateImage read(const std::string &path) {
    auto input = open_input(path);
    const OIIO::ImageSpec &spec = input->spec();
    if (spec.nchannels < 1 || spec.width < 1 || spec.height < 1) throw Error(quoted(path) + " holds no pixels");
    require_inside_display(spec, path);
    const int stored = std::min(spec.nchannels, 4);
    PlateImage file(spec.width, spec.height, stored);
    if (!input->read_image(0, 0, 0, stored, OIIO::TypeDesc::FLOAT, file.pixels.data()))
        throw Error("cannot read " + quoted(path) + ": " + one_line(input->geterror()));
    if (!fills_display(spec)) file = in_display_window(file, spec);
    if (stored >= 3) return file;
    // Grey (and grey with alpha): the grey goes to all three colours.
    PlateImage colour(file.width, file.height, stored + 2);
    const std::size_t count = std::size_t(file.width) * std::size_t(file.height);
    for (std::size_t i = 0; i < count; ++i) {
        const float *from = &file.pixels[i * std::size_t(stored)];
        float *to = &colour.pixels[i * std::size_t(colour.channels)];
        to[0] = to[1] = to[2] = from[0];
        if (stored == 2) to[3] = from[1];
    }
    return colour;
}

// Whether samples are all +0, compared as bytes (a -0 is converted).
bool all_zero(const float *samples, std::size_t count) {
    static const float zeros[4096] = {};
    for (std::size_t at = 0; at < count; at += 4096)
        if (std::memcmp(samples + at, zeros, sizeof(float) * std::min<std::size_t>(4096, count - at)) != 0) return false;
    return true;
}

// Halves from floats, a piece at a time, empty pieces as zeros.
void to_halves(const float *samples, uint16_t *halves, std::size_t count) {
    constexpr std::size_t kPiece = 4096;
    for (std::size_t at = 0; at < count; at += kPiece) {
        const std::size_t piece = std::min(kPiece, count - at);
        if (all_zero(samples + at, piece))
            std::memset(halves + at, 0, piece * sizeof(uint16_t));
        else
            floats_to_halves(samples + at, halves + at, piece);
    }
}

void round_to_type(float *samples, std::size_t count, SampleType type) {
    if (type == SampleType::Half) {
        // In pieces, so a whole frame never needs a second buffer.
        constexpr std::size_t kPiece = 4096;
        uint16_t halves[kPiece];
        for (std::size_t at = 0; at < count; at += kPiece) {
            const std::size_t piece = std::min(kPiece, count - at);
            if (all_zero(samples + at, piece)) continue;  // most of a layer
            floats_to_halves(samples + at, halves, piece);
            halves_to_floats(halves, samples + at, piece);
        }
        return;
    }
    const OIIO::TypeDesc stored = type_desc(type);
    std::vector<unsigned char> file(count * stored.size());
    OIIO::convert_pixel_values(OIIO::TypeDesc::FLOAT, samples, stored, file.data(), int(count));
    OIIO::convert_pixel_values(stored, file.data(), OIIO::TypeDesc::FLOAT, samples, int(count));
}

bool can_store(const std::string &path, SampleType type) {
    auto output = OIIO::ImageOutput::create(path);
    if (!output) {
        OIIO::geterror();  // clear the library's pending message
        return false;
    }
    const std::string extension = lower_extension(path);
    if (extension == ".exr" || extension == ".tif" || extension == ".tiff") return true;
    if (extension == ".png" || extension == ".dpx") return type == SampleType::UInt8 || type == SampleType::UInt16;
    return type == SampleType::UInt8;
}

void write(AtomicFile &file, const PlateImage &image, SampleType type, const std::string &compression) {
    const std::string &path = file.path();
    auto output = OIIO::ImageOutput::create(path);
    if (!output) throw Error("cannot write " + quoted(path) + ": no image format for its extension");
    OIIO::ImageSpec spec(image.width, image.height, image.channels, type_desc(type));
    if (!compression.empty()) spec.attribute("compression", compression);
    // A fixed stamp instead of the wall clock: the same frame, the same bytes.
    spec.attribute("DateTime", "1970:01:01 00:00:00");
    // Halves are handed over as halves: the library's own conversion is the
    // slow part of writing them.
    thread_local std::vector<uint16_t> halves;
    const void *samples = image.pixels.data();
    OIIO::TypeDesc given = OIIO::TypeDesc::FLOAT;
    if (type == SampleType::Half) {
        halves.resize(image.pixels.size());
        to_halves(image.pixels.data(), halves.data(), halves.size());
        samples = halves.data();
        given = OIIO::TypeDesc::HALF;
    }
    if (!output->open(file.temporary_path(), spec) || !output->write_image(given, samples) || !output->close())
        throw Error("cannot write " + quoted(path) + ": " + one_line(output->geterror()));
}

class ProcessorConversion : public ColourConversion {
public:
    explicit ProcessorConversion(OIIO::ColorProcessorHandle processor) : processor_(std::move(processor)) {}
    void apply(float *pixels, std::size_t count, int channels, int rows) const {
        const OIIO::stride_t pixel = OIIO::stride_t(channels) * OIIO::stride_t(sizeof(float));
        processor_->apply(pixels, int(count), rows, 3, sizeof(float), pixel, pixel * OIIO::stride_t(count));
    }
    void apply(float *pixels, std::size_t count, int channels) const override {
        if (identity() || count == 0) return;
        // One row at a time of at most a million pixels keeps the library's
        // int width in range.
        constexpr std::size_t kRun = 1 << 20;
        for (std::size_t at = 0; at < count; at += kRun)
            apply(pixels + at * std::size_t(channels), std::min(kRun, count - at), channels, 1);
    }
    bool identity() const override { return !processor_ || processor_->isNoOp(); }

private:
    OIIO::ColorProcessorHandle processor_;
};

class OiioColourConfig : public ColourConfig {
public:
    explicit OiioColourConfig(const std::string &path) : path_(path), config_(path) {
        // The library reports a missing $OCIO as an error of its own and
        // falls back to its built-in spaces, which is what is wanted then.
        const std::string problem = config_.geterror();
        if (!path.empty() && !problem.empty())
            throw Error("colour config " + quoted(path) + ": " + one_line(problem));
        if (path.empty()) {
            const char *ocio = std::getenv("OCIO");
            path_ = ocio && *ocio && problem.empty() ? ocio : "";
        }
    }
    std::vector<std::string> spaces() const override { return config_.getColorSpaceNames(); }
    std::string role(const std::string &name) const override {
        const char *space = config_.getColorSpaceNameByRole(name);
        return space ? space : "";
    }
    std::shared_ptr<const ColourConversion> conversion(const std::string &from, const std::string &to) const override {
        require_space(from);
        require_space(to);
        if (from == to) return std::make_shared<ProcessorConversion>(nullptr);
        std::lock_guard<std::mutex> lock(mutex_);
        OIIO::ColorProcessorHandle processor = config_.createColorProcessor(from, to);
        if (!processor)
            throw Error("colour config " + describe() + ": no conversion from " + quoted(from) + " to " + quoted(to) +
                        ": " + one_line(const_cast<OIIO::ColorConfig &>(config_).geterror()));
        return std::make_shared<ProcessorConversion>(std::move(processor));
    }
    std::string describe() const override {
        return path_.empty() ? "OpenImageIO's built-in spaces" : quoted(path_);
    }

    std::vector<std::string> displays() const override {
        return default_first(config_.getDisplayNames(), config_.getDefaultDisplayName());
    }
    std::vector<std::string> views(const std::string &display) const override {
        return default_first(config_.getViewNames(display), config_.getDefaultViewName(display));
    }
    std::shared_ptr<const ColourConversion> display_conversion(const std::string &from, const std::string &display,
                                                               const std::string &view) const override {
        require_space(from);
        require_member("display", display, displays());
        require_member("view", view, views(display));
        std::lock_guard<std::mutex> lock(mutex_);
        OIIO::ColorProcessorHandle processor = config_.createDisplayTransform(display, view, from);
        if (!processor)
            throw Error("colour config " + describe() + ": no display transform from " + quoted(from) + " to " +
                        quoted(display) + " " + quoted(view) + ": " +
                        one_line(const_cast<OIIO::ColorConfig &>(config_).geterror()));
        return std::make_shared<ProcessorConversion>(std::move(processor));
    }

private:
    static std::vector<std::string> default_first(std::vector<std::string> names, const char *first) {
        const std::string wanted = first ? first : "";
        auto found = std::find(names.begin(), names.end(), wanted);
        if (found != names.end()) std::rotate(names.begin(), found, found + 1);
        return names;
    }
    void require_member(const char *what, const std::string &name, const std::vector<std::string> &names) const {
        if (std::find(names.begin(), names.end(), name) != names.end()) return;
        std::string list;
        for (const std::string &one : names) list += (list.empty() ? "" : ", ") + one;
        throw Error(std::string("unknown ") + what + " " + quoted(name) + " in " + describe() +
                    "; available: " + (list.empty() ? "none" : list));
    }
    void require_space(const std::string &name) const {
        const std::vector<std::string> names = spaces();
        // Space names are not case-sensitive in the configuration either.
        auto same = [&name](const std::string &one) { return OIIO::Strutil::iequals(one, name); };
        if (std::find_if(names.begin(), names.end(), same) != names.end() || !role(name).empty()) return;
        std::string list;
        for (const std::string &one : names) list += (list.empty() ? "" : ", ") + one;
        throw Error("unknown colour space " + quoted(name) + " in " + describe() + "; available: " + list);
    }

    std::string path_;
    OIIO::ColorConfig config_;
    mutable std::mutex mutex_;
};

std::shared_ptr<const ColourConfig> open_config(const std::string &path) {
    if (!path.empty()) {
        std::error_code error;
        if (!std::filesystem::is_regular_file(path, error) || !std::ifstream(path))
            throw Error("colour config " + quoted(path) + " cannot be read");
    }
    return std::make_shared<OiioColourConfig>(path);
}

const PlateCodec codec = {kPlateCodecVersion, probe, read, write, round_to_type, can_store, open_config};

}  // namespace

}  // namespace sparkhost

extern "C" __attribute__((visibility("default"))) const sparkhost::PlateCodec *sparkhost_plate_codec() {
    return &sparkhost::codec;
}
