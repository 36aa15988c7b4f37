// Float plates and colour conversions through the plate module, loaded the
// first time one is needed.
#include "sparkhost/colour/plate_io.h"

#include <dlfcn.h>

#include <cstdlib>
#include <filesystem>
#include <mutex>

#include "sparkhost/core/error.h"
#include "sparkhost/files/image_io.h"
#include "sparkhost/colour/plate_codec.h"

namespace sparkhost {

namespace {

constexpr const char *kModuleName = "sparkhost-plates.so";

// Beside this library, wherever it was built or installed.
std::string module_path() {
    if (const char *chosen = std::getenv("SPARKHOST_PLATES"); chosen && *chosen) return chosen;
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&module_path), &info) && info.dli_fname)
        return (std::filesystem::path(info.dli_fname).parent_path() / kModuleName).string();
    return kModuleName;
}

const PlateCodec &codec() {
    static std::once_flag once;
    static const PlateCodec *loaded = nullptr;
    static std::string problem;
    std::call_once(once, [] {
        // After the image I/O module, whose loading thread may be mapping the
        // same libraries: two loads at once race inside the loader and in
        // the colour library's start-up.
        require_image_io();
        const std::string path = module_path();
        // Never closed: the image library stays until the process ends.
        void *handle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
        if (!handle) {
            const char *why = dlerror();
            problem = "cannot load the plate module '" + path + "': " + (why ? why : "unknown error");
            return;
        }
        using Entry = const PlateCodec *(*)();
        auto entry = reinterpret_cast<Entry>(dlsym(handle, SPARKHOST_PLATE_CODEC_SYMBOL));
        const PlateCodec *table = entry ? entry() : nullptr;
        if (!table || table->version != kPlateCodecVersion) {
            problem = "the plate module '" + path + "' is not one this program can use";
            return;
        }
        loaded = table;
    });
    if (!loaded) throw Error(problem);
    return *loaded;
}

}  // namespace

const char *sample_type_name(SampleType type) {
    switch (type) {
    case SampleType::Half: return "half";
    case SampleType::Float: return "float";
    case SampleType::UInt16: return "uint16";
    case SampleType::UInt8: return "uint8";
    }
    return "?";
}

PlateInfo probe_plate(const std::string &path) { return codec().probe(path); }

PlateImage read_plate(const std::string &path) { return codec().read(path); }

void write_plate(AtomicFile &file, const PlateImage &image, SampleType type, const std::string &compression) {
    codec().write(file, image, type, compression);
}

void round_to_type(float *samples, std::size_t count, SampleType type) {
    if (type != SampleType::Float) codec().round_to_type(samples, count, type);
}

bool can_store(const std::string &path, SampleType type) { return codec().can_store(path, type); }

std::shared_ptr<const ColourConfig> open_colour_config(const std::string &path) { return codec().open_config(path); }

}  // namespace sparkhost
