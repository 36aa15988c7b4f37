// Image files through the image I/O module, loaded on first use or ahead of
// it on a thread of its own; compression choices are settled here.
#include "sparkhost/files/image_io.h"

#include <dlfcn.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include "sparkhost/core/error.h"
#include "sparkhost/files/image_codec.h"

namespace sparkhost {

namespace {

constexpr const char *kModuleName = "sparkhost-imageio.so";

// Beside this library, wherever it was built or installed; the variable
// names another module (or a missing one, to see the error).
std::string module_path() {
    if (const char *chosen = std::getenv("SPARKHOST_IMAGE_IO"); chosen && *chosen) return chosen;
    Dl_info info{};
    if (dladdr(reinterpret_cast<void *>(&module_path), &info) && info.dli_fname)
        return (std::filesystem::path(info.dli_fname).parent_path() / kModuleName).string();
    return kModuleName;
}

class CodecLoader {
public:
    CodecLoader() = default;
    // A load still under way is waited for: the thread is never left running.
    ~CodecLoader() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (thread_.joinable()) thread_.join();
    }
    CodecLoader(const CodecLoader &) = delete;
    CodecLoader &operator=(const CodecLoader &) = delete;

    void start() {
        std::lock_guard<std::mutex> lock(mutex_);
        if (thread_.joinable() || attempted_) return;
        thread_ = std::thread([this] { load(); });
    }

    const ImageCodec &get() {
        if (const ImageCodec *ready = ready_.load(std::memory_order_acquire)) return *ready;
        std::lock_guard<std::mutex> lock(mutex_);
        if (thread_.joinable()) thread_.join();
        if (!attempted_) load();
        if (!codec_) throw Error(problem_);
        ready_.store(codec_, std::memory_order_release);
        return *codec_;
    }

private:
    // Runs on the loading thread, or under the mutex with no thread.
    void load() {
        attempted_ = true;
        const std::string path = module_path();
        // Never closed: the image library stays until the process ends.
        // Bound lazily: of its libraries' functions a render calls a handful,
        // and binding them all up front is most of the time taken to load.
        void *handle = dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
        if (!handle) {
            const char *why = dlerror();
            problem_ = "cannot load the image I/O module '" + path + "': " + (why ? why : "unknown error");
            return;
        }
        using Entry = const ImageCodec *(*)();
        auto entry = reinterpret_cast<Entry>(dlsym(handle, SPARKHOST_IMAGE_CODEC_SYMBOL));
        const ImageCodec *codec = entry ? entry() : nullptr;
        if (!codec || codec->version != kImageCodecVersion) {
            problem_ = "the image I/O module '" + path + "' is not one this program can use (" +
                       (codec ? "version " + std::to_string(codec->version) : "no " SPARKHOST_IMAGE_CODEC_SYMBOL) +
                       ")";
            return;
        }
        codec_ = codec;
    }

    std::mutex mutex_;
    std::thread thread_;
    std::atomic<const ImageCodec *> ready_{nullptr};
    bool attempted_ = false;
    const ImageCodec *codec_ = nullptr;
    std::string problem_;
};

CodecLoader &loader() {
    static CodecLoader instance;
    return instance;
}

const ImageCodec &codec() { return loader().get(); }

std::string extension_of(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(), ::tolower);
    return extension;
}

// What every compositor reads: TIFF uncompressed, as frame TIFFs usually
// are (Deflate, even at its fastest level, costs more than rendering a
// 1080p frame and halves a render's speed on two processors); PIZ EXR,
// which on grainy pictures is both smaller and faster than ZIP; PNG, always
// Deflate, at the fastest level.
const char *render_compression(const std::string &extension) {
    if (extension == ".tif" || extension == ".tiff") return "none";
    if (extension == ".exr") return "piz";
    if (extension == ".png") return "zip:1";
    return "";
}

// The compression names each format's writer knows; others are refused
// rather than quietly replaced by the writer's default.
const std::vector<std::string> *known_compressions(const std::string &extension) {
    static const std::vector<std::string> tiff = {"none", "lzw", "zip", "packbits"};
    static const std::vector<std::string> exr = {"none", "rle",  "zip", "zips", "piz",
                                                 "pxr24", "b44", "b44a", "dwaa", "dwab"};
    static const std::vector<std::string> png = {"zip", "none"};
    if (extension == ".tif" || extension == ".tiff") return &tiff;
    if (extension == ".exr") return &exr;
    if (extension == ".png") return &png;
    return nullptr;
}

}  // namespace

void preload_image_io() { loader().start(); }

void require_image_io() { codec(); }

ImageSize probe_image(const std::string &path) { return codec().probe(path); }

Frame read_image(const std::string &path, Depth depth) { return codec().read(path, depth); }

bool can_write_image(const std::string &path) { return codec().can_write(path); }

void write_image(AtomicFile &file, const Frame &frame, const std::string &compression) {
    codec().write(file, frame, compression.empty() ? render_compression(extension_of(file.path())) : compression);
}

void write_image(const std::string &path, const Frame &frame, const std::string &compression) {
    AtomicFile file(path);
    write_image(file, frame, compression);
    file.commit();
}

std::string default_compression(const std::string &path) { return render_compression(extension_of(path)); }

void check_compression(const std::string &path, const std::string &compression) {
    const std::string extension = extension_of(path);
    const std::vector<std::string> *known = known_compressions(extension);
    if (!known) throw Error("--compression: " + extension + " files take no compression setting");
    const std::string name = compression.substr(0, compression.find(':'));
    const std::string level = compression.find(':') == std::string::npos ? "" : compression.substr(compression.find(':') + 1);
    const bool level_ok = level.empty() || (level.size() <= 2 && std::all_of(level.begin(), level.end(), ::isdigit) &&
                                            std::stoi(level) <= 9 && name == "zip");
    if (std::find(known->begin(), known->end(), name) == known->end() || !level_ok) {
        std::string names;
        for (const std::string &one : *known) names += (names.empty() ? "" : ", ") + one;
        throw Error("--compression: '" + compression + "' is not one of " + names + " (zip:0-9 sets a level) for " +
                    extension + " files");
    }
}

}  // namespace sparkhost
