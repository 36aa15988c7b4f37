// The studio's undo stack over whole settings.
#include "history.h"

#include "render/control_options.h"
#include "sparkhost/controls/text_match.h"

using sparkhost::Control;
using sparkhost::ControlKind;

ShotSettings settings_of(sparkhost::Host &host, bool preroll) {
    ShotSettings settings;
    for (const Control &control : host.controls().controls()) {
        if (control.kind() == ControlKind::String) settings.texts[control.number()] = control.text();
        else if (control.has_value()) settings.values[control.number()] = control.value();
    }
    settings.curves = sparkhost::all_curves();
    settings.preroll = preroll;
    return settings;
}

void put_back(sparkhost::Host &host, const ShotSettings &settings) {
    // A preset list sets other controls in its callback: the next pass puts
    // back those it changed after they were set.
    for (int pass = 0; pass < 3; ++pass) {
        bool differed = false;
        for (const auto &[number, text] : settings.texts) {
            Control *control = host.controls().find(number);
            if (!control || control->text() == text) continue;
            differed = true;
            control->set_text(text);
            PreviewPause pause(host.controls());
            host.press_control(number);
        }
        for (const auto &[number, value] : settings.values) {
            Control *control = host.controls().find(number);
            if (!control || control->value() == value) continue;
            differed = true;
            // "Auto Preview" itself is put back as it was; any other change renders nothing.
            std::optional<PreviewPause> pause;
            if (sparkhost::lower(control->name()) != "auto preview") pause.emplace(host.controls());
            try {
                host.set_control(number, value);
            } catch (const sparkhost::ControlError &) {
                // Refused while another control holds its range shut: the next pass, once that one is back.
                if (pass == 2) throw;
            }
        }
        if (!differed) break;
    }
    for (const auto &[number, curve] : sparkhost::all_curves())
        if (!settings.curves.count(number)) sparkhost::remove_curve(number);
    for (const auto &[number, curve] : settings.curves) sparkhost::set_curve(number, curve);
}

void History::step(ShotSettings before) {
    if (!undo_.empty() && undo_.back() == before) return;
    undo_.push_back(std::move(before));
    if (undo_.size() > steps_) undo_.pop_front();
    redo_.clear();
}

std::optional<ShotSettings> History::undo(const ShotSettings &now) {
    while (!undo_.empty() && undo_.back() == now) undo_.pop_back();
    if (undo_.empty()) return std::nullopt;
    ShotSettings back = std::move(undo_.back());
    undo_.pop_back();
    redo_.push_back(now);
    return back;
}

std::optional<ShotSettings> History::redo(const ShotSettings &now) {
    while (!redo_.empty() && redo_.back() == now) redo_.pop_back();
    if (redo_.empty()) return std::nullopt;
    ShotSettings forward = std::move(redo_.back());
    redo_.pop_back();
    undo_.push_back(now);
    return forward;
}
