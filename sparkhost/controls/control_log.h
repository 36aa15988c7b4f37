// Our host's record of what a plug-in did to its controls: updates asked
// for, and which controls it enabled or disabled.
#pragma once

#include <map>
#include <mutex>
#include <vector>

namespace sparkhost {

struct ControlCall {
    enum Kind { Update, Enable, Disable };
    Kind kind;
    int what;     // first argument of enable/disable (1: a user-interface control); 0 for updates
    int control;  // host control number
    bool operator==(const ControlCall &other) const {
        return kind == other.kind && what == other.what && control == other.control;
    }
};

class ControlLog {
public:
    void Update(int control);
    void Enable(int what, int control);
    void Disable(int what, int control);

    // Every call in the order made.
    std::vector<ControlCall> calls() const;
    // The controls passed to sparkControlUpdate, in order.
    std::vector<int> updates() const;
    // A control is enabled until the plug-in disables it (whatever the first argument).
    bool enabled(int control) const;
    void clear();

private:
    mutable std::mutex mutex_;
    std::vector<ControlCall> calls_;
    std::map<int, bool> enabled_;
};

// The log that the process's sparkControlUpdate, sparkEnableParameter and
// sparkDisableParameter write to.
ControlLog &control_log();

}  // namespace sparkhost
