// Layers and float scenes: two renders a frame, the layer worked out and
// written, and float plates composited, on writer threads in frame order.
#include "plate_output.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "sparkhost/files/atomic_file.h"
#include "sparkhost/colour/bubble_layer.h"
#include "sparkhost/core/error.h"
#include "sparkhost/files/image_io.h"

using sparkhost::Error;

namespace {

constexpr std::size_t kQueueDepth = 2;
constexpr int kWriters = 2;

std::string lower_extension(const std::string &path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char &c : extension) c = char(std::tolower(static_cast<unsigned char>(c)));
    return extension;
}

// A layer is mostly empty, in long runs of zeros: RLE, which only counts
// runs, keeps it about as small as PIZ, the render's choice, and writes it
// in a fraction of the time.
std::string layer_compression(const std::string &path) {
    return lower_extension(path) == ".exr" ? "rle" : sparkhost::default_compression(path);
}

bool exists(const std::string &path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

}  // namespace

PlateOutput::PlateOutput(sparkhost::Host &host, const RenderOptions &options,
                         std::function<void(const std::string &)> notes)
    : host_(host), options_(options), notes_(std::move(notes)), scene_(options.inputs[sparkhost::kScene]),
      output_(options.output), layer_(options.plates.layer) {
    const PlateOptions &plates = options.plates;
    const std::string &scene = options.inputs[sparkhost::kScene];
    const std::string &reflection = options.inputs[sparkhost::kReflection];
    const bool float_reflection =
        !reflection.empty() && may_hold_float(reflection) &&
        sparkhost::probe_plate(sparkhost::FramePattern(reflection).path(options.first_frame)).is_float();
    sparkhost::PlateInfo scene_info;
    if (!scene.empty() && may_hold_float(scene)) {
        scene_info = sparkhost::probe_plate(scene_.path(scene_.is_sequence() ? options.first_frame : 0));
        float_scene_ = scene_info.is_float();
    }
    if (plates.colour_asked() || float_scene_ || float_reflection) {
        config_ = sparkhost::open_colour_config(plates.colour_config);
        // Both names are checked even when nothing needs converting, so a
        // misspelt space never passes unnoticed.
        config_->conversion(plates.working_space, plates.working_space);
        if (!plates.scene_space.empty()) config_->conversion(plates.scene_space, plates.scene_space);
    }
    if (float_reflection) use_float_reflection(host, options, *config_);
    if (float_scene_) {
        scene_type_ = scene_info.type;
        scene_space_ = space_of(scene, scene_info);
        to_scene_ = config_->conversion(plates.working_space, scene_space_);
        const std::string extension = lower_extension(options.output);
        if (extension != ".exr" && extension != ".tif" && extension != ".tiff")
            throw Error("output '" + options.output + "': a float scene keeps its values only in a float file (exr or tif)");
        if (options.overlay)
            throw Error("--overlay draws on integer frames; with a float scene use --overlay-svg");
        if (scene_info.width != options.format.width || scene_info.height != options.format.height)
            throw Error("scene input: '" + scene + "' is " + std::to_string(scene_info.width) + "x" +
                        std::to_string(scene_info.height) + " but the frame is " + options.format.size_text());
        // The effect reads the scene only to composite over it, so it is
        // given black; the plate itself is read by the writers.
        host.set_input(sparkhost::kScene, sparkhost::Frame(options.format));
    }
    active_ = float_scene_ || !plates.layer.empty();
    if (!active_) return;
    if (!host.can_simulate())
        throw Error("plug-in '" + host.plugin_path() + "' cannot save and restore its state, which a layer or float scene needs");
    if (!plates.layer.empty()) {
        const std::string first = layer_.path(options.first_frame);
        if (!sparkhost::can_store(first, plates.layer_type))
            throw Error("--layer: '" + plates.layer + "' cannot hold " + sparkhost::sample_type_name(plates.layer_type) +
                        " samples");
        std::filesystem::path directory = std::filesystem::path(first).parent_path();
        if (directory.empty()) directory = ".";
        if (access(directory.c_str(), W_OK) != 0)
            throw Error("--layer: directory '" + directory.string() + "' is not writable");
    }
    if (float_scene_)
        for (int frame = options.first_frame; frame <= options.last_frame && scene_.is_sequence(); ++frame) {
            const sparkhost::PlateInfo info = sparkhost::probe_plate(scene_.path(frame));
            if (info.width != options.format.width || info.height != options.format.height)
                throw Error("scene input: '" + scene_.path(frame) + "' is " + std::to_string(info.width) + "x" +
                            std::to_string(info.height) + " but the frame is " + options.format.size_text());
        }
    black_ = sparkhost::constant_frame(options.format, 0);
    grey_ = sparkhost::constant_frame(options.format, sparkhost::layer_grey_level(options.format.depth));
    for (int i = 0; i < kWriters; ++i) threads_.emplace_back([this] { work(); });
}

PlateOutput::~PlateOutput() {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        closing_ = true;
    }
    changed_.notify_all();
    for (std::thread &thread : threads_) thread.join();
}

std::string PlateOutput::space_of(const std::string &pattern, const sparkhost::PlateInfo &info) const {
    return plate_space(*config_, options_.plates, pattern, info);
}

bool PlateOutput::frame_exists(int frame) const {
    if (!exists(output_.path(frame))) return false;
    return options_.plates.layer.empty() || exists(layer_.path(frame));
}

void PlateOutput::render(int frame) {
    flush_notes();
    throw_failure();
    const std::vector<uint8_t> state = host_.export_state();
    Job job{frame, {}, {}, 0};
    {
        std::lock_guard<std::mutex> lock(mutex_);
        for (sparkhost::Frame *into : {&job.over_black, &job.over_grey})
            if (!spare_.empty()) {
                *into = std::move(spare_.back());
                spare_.pop_back();
            }
    }
    if (!host_.run_frame_over(frame, black_)) throw Error(host_.last_failure());
    host_.take_output(job.over_black);
    if (!host_.import_state(state)) throw Error("plug-in refused its own state at frame " + std::to_string(frame));
    if (!host_.run_frame_over(frame, grey_)) throw Error(host_.last_failure());
    job.over_grey.assign(host_.output_buffer());
    if (!float_scene_ && !host_.import_state(state))
        throw Error("plug-in refused its own state at frame " + std::to_string(frame));
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this] { return queue_.size() < kQueueDepth || failure_; });
    if (failure_) std::rethrow_exception(failure_);
    job.sequence = submitted_++;
    queue_.push_back(std::move(job));
    changed_.notify_all();
}

void PlateOutput::finish() {
    if (!active_) return;
    {
        std::unique_lock<std::mutex> lock(mutex_);
        changed_.wait(lock, [this] { return (queue_.empty() && writing_ == 0) || failure_; });
    }
    flush_notes();
    throw_failure();
}

void PlateOutput::throw_failure() {
    std::lock_guard<std::mutex> lock(mutex_);
    if (failure_) std::rethrow_exception(failure_);
}

void PlateOutput::flush_notes() {
    std::vector<std::string> notes;
    {
        std::lock_guard<std::mutex> lock(mutex_);
        notes.swap(pending_notes_);
    }
    for (const std::string &note : notes) notes_(note);
}

void PlateOutput::work() {
    Scratch scratch;
    for (;;) {
        Job job;
        {
            std::unique_lock<std::mutex> lock(mutex_);
            changed_.wait(lock, [this] { return !queue_.empty() || closing_; });
            if (queue_.empty()) return;
            job = std::move(queue_.front());
            queue_.pop_front();
            ++writing_;
        }
        changed_.notify_all();
        try {
            write_frame(job, scratch);
        } catch (...) {
            std::lock_guard<std::mutex> lock(mutex_);
            if (!failure_) failure_ = std::current_exception();
        }
        {
            std::lock_guard<std::mutex> lock(mutex_);
            --writing_;
            spare_.push_back(std::move(job.over_black));
            spare_.push_back(std::move(job.over_grey));
            // A failed frame still takes its turn, so later ones never wait for it.
            if (committed_ == job.sequence) ++committed_;
        }
        changed_.notify_all();
    }
}

// The frame's layer (in scratch) over its plate, in scratch.plate.
const sparkhost::PlateImage &PlateOutput::composite_frame(int frame, Scratch &scratch) {
    const std::string plate_path = scene_.path(scene_.is_sequence() ? frame : 0);
    sparkhost::PlateImage &plate = scratch.plate;
    std::size_t non_finite = 0;
    try {
        if (!scene_.is_sequence()) {
            // A still plate is read once; each frame composites over it.
            std::shared_ptr<const sparkhost::PlateImage> still;
            {
                std::lock_guard<std::mutex> lock(still_mutex_);
                if (!still_plate_) {
                    still_plate_ = std::make_shared<sparkhost::PlateImage>(sparkhost::read_plate(plate_path));
                    still_non_finite_ = sparkhost::count_non_finite(*still_plate_);
                }
                still = still_plate_;
                non_finite = still_non_finite_;
            }
            sparkhost::composite_over(scratch.layer, *still, plate);
        } else {
            plate = sparkhost::read_plate(plate_path);
            non_finite = sparkhost::count_non_finite(plate);
            sparkhost::composite_over(scratch.layer, plate);
        }
    } catch (const Error &error) {
        throw Error(std::string("scene input: ") + error.what());
    }
    if (non_finite) {
        std::lock_guard<std::mutex> lock(mutex_);
        if (!warned_non_finite_)
            pending_notes_.push_back("scene '" + plate_path + "' holds " + std::to_string(non_finite) +
                                     " NaN or infinite values: kept where no bubble falls, carried through "
                                     "the over operation under bubbles");
        warned_non_finite_ = true;
    }
    return plate;
}

void PlateOutput::write_frame(const Job &job, Scratch &scratch) {
    const PlateOptions &plates = options_.plates;
    sparkhost::PlateImage &layer = scratch.layer;
    sparkhost::layer_from_renders(job.over_black, job.over_grey, layer);
    if (to_scene_) sparkhost::convert_layer(layer, *to_scene_);
    std::unique_ptr<sparkhost::AtomicFile> layer_file, output_file;
    if (!plates.layer.empty()) {
        // Rounded as the file will hold it, so the output is exactly the
        // written layer over the plate.
        sparkhost::round_to_type(layer.pixels.data(), layer.pixels.size(), plates.layer_type);
        const std::string path = layer_.path(job.number);
        layer_file = std::make_unique<sparkhost::AtomicFile>(path);
        sparkhost::write_plate(*layer_file, layer, plates.layer_type, layer_compression(path));
    }
    if (float_scene_) {
        const sparkhost::PlateImage &plate = composite_frame(job.number, scratch);
        const std::string path = output_.path(job.number);
        output_file = std::make_unique<sparkhost::AtomicFile>(path);
        sparkhost::write_plate(*output_file, plate, scene_type_,
                               options_.compression.empty() ? sparkhost::default_compression(path) : options_.compression);
    }
    // Files appear in frame order, as from a single writer.
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [this, &job] { return committed_ == job.sequence || failure_; });
    if (failure_) return;
    if (layer_file) layer_file->commit();
    if (output_file) output_file->commit();
}
