// Undo and redo for the studio: the settings before each step the user took,
// put back through the plug-in as a user would, so that its callbacks run.
#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <optional>
#include <string>

#include "sparkhost/controls/curves.h"
#include "sparkhost/core/host.h"

// Everything a step can change: control values, texts and keys, and
// whether the bubbles restart with a pre-roll.
struct ShotSettings {
    std::map<int, double> values;
    std::map<int, std::string> texts;
    std::map<int, sparkhost::Curve> curves;
    bool preroll = false;

    bool operator==(const ShotSettings &other) const {
        return values == other.values && texts == other.texts && curves == other.curves && preroll == other.preroll;
    }
    bool operator!=(const ShotSettings &other) const { return !(*this == other); }
};

ShotSettings settings_of(sparkhost::Host &host, bool preroll);
// Sets every control that differs, as the user would (callbacks run; a list
// whose callback sets others is followed by another pass), then the keys.
// No frame is rendered on the way.
void put_back(sparkhost::Host &host, const ShotSettings &settings);

class History {
public:
    explicit History(size_t steps = 200) : steps_(steps) {}

    // Before a step: the settings it starts from. Clears what could be redone.
    void step(ShotSettings before);
    // The settings to put back for an undo (or a redo) from `now`, which
    // becomes the redo (or undo); none when there is nothing to go back to.
    // Steps that changed nothing are passed over.
    std::optional<ShotSettings> undo(const ShotSettings &now);
    std::optional<ShotSettings> redo(const ShotSettings &now);
    size_t undoable() const { return undo_.size(); }
    size_t redoable() const { return redo_.size(); }

private:
    size_t steps_;
    std::deque<ShotSettings> undo_, redo_;
};
