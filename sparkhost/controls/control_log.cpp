// Control updates and enable/disable calls of our host: logged for
// inspection; the host has no control panel to redraw.
#include "sparkhost/controls/control_log.h"

#include "spark/spark.h"

namespace sparkhost {

void ControlLog::Update(int control) {
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back({ControlCall::Update, 0, control});
}

void ControlLog::Enable(int what, int control) {
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back({ControlCall::Enable, what, control});
    enabled_[control] = true;
}

void ControlLog::Disable(int what, int control) {
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.push_back({ControlCall::Disable, what, control});
    enabled_[control] = false;
}

std::vector<ControlCall> ControlLog::calls() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return calls_;
}

std::vector<int> ControlLog::updates() const {
    std::lock_guard<std::mutex> lock(mutex_);
    std::vector<int> controls;
    for (const ControlCall &call : calls_)
        if (call.kind == ControlCall::Update) controls.push_back(call.control);
    return controls;
}

bool ControlLog::enabled(int control) const {
    std::lock_guard<std::mutex> lock(mutex_);
    auto found = enabled_.find(control);
    return found == enabled_.end() || found->second;
}

void ControlLog::clear() {
    std::lock_guard<std::mutex> lock(mutex_);
    calls_.clear();
    enabled_.clear();
}

ControlLog &control_log() {
    static ControlLog log;
    return log;
}

}  // namespace sparkhost

extern "C" {
void sparkControlUpdate(int control) { sparkhost::control_log().Update(control); }
void sparkEnableParameter(int what, int control) { sparkhost::control_log().Enable(what, control); }
void sparkDisableParameter(int what, int control) { sparkhost::control_log().Disable(what, control); }
}
