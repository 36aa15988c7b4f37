// The optional simulation and state entry points of a plug-in: frames
// advanced without a picture, and the plug-in's state saved and restored.
#include <string>

#include "spark/spark_state.h"
#include "sparkhost/controls/curves.h"
#include "sparkhost/core/error.h"
#include "sparkhost/core/host.h"

namespace sparkhost {

namespace {

using SimulateFunction = int (*)(SparkInfoStruct);
using ClipMaskFunction = unsigned int (*)();
using ExportFunction = size_t (*)(void *, size_t);
using ImportFunction = int (*)(const void *, size_t);

}  // namespace

bool Host::can_simulate() const {
    for (const char *name : {"SparkSimulate", "SparkSimulateClips", "SparkStateExport", "SparkStateImport"})
        if (!exports(name)) return false;
    return true;
}

void Host::simulate(int frame) {
    require_loaded("SparkSimulate");
    auto simulate_entry = reinterpret_cast<SimulateFunction>(symbol("SparkSimulate"));
    auto clips_entry = reinterpret_cast<ClipMaskFunction>(symbol("SparkSimulateClips"));
    if (!simulate_entry || !clips_entry)
        throw Error("plug-in '" + path_ + "' cannot simulate a frame without drawing it");
    apply_proxy();
    make_current();
    current_frame_ = frame;
    apply_curves(controls_, float(info_record(frame).FrameNo));
    // Only the clips the simulation reads with this frame's controls: the
    // others cost time and change nothing.
    prepare_frame(frame, clips_entry() & kAllClips);
    if (!started_) {
        if (auto start = reinterpret_cast<int (*)()>(symbol("SparkProcessStart"))) start();
        started_ = true;
    }
    last_failure_.clear();
    if (!simulate_entry(info_record(frame)))
        throw Error("plug-in refused to simulate frame " + std::to_string(frame));
}

std::vector<uint8_t> Host::export_state() {
    require_loaded("SparkStateExport");
    auto export_entry = reinterpret_cast<ExportFunction>(symbol("SparkStateExport"));
    if (!export_entry) throw Error("plug-in '" + path_ + "' exports no SparkStateExport");
    make_current();
    std::vector<uint8_t> state(export_entry(nullptr, 0));
    // The size is asked again with the buffer: it must not have changed.
    if (export_entry(state.data(), state.size()) != state.size())
        throw Error("plug-in '" + path_ + "' changed its state while exporting it");
    return state;
}

bool Host::import_state(const std::vector<uint8_t> &state) {
    require_loaded("SparkStateImport");
    auto import_entry = reinterpret_cast<ImportFunction>(symbol("SparkStateImport"));
    if (!import_entry) throw Error("plug-in '" + path_ + "' exports no SparkStateImport");
    make_current();
    return import_entry(state.data(), state.size()) == 1;
}

}  // namespace sparkhost
