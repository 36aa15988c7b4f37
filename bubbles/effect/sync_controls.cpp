// SyncControls: bring every control up to date with the host, then show
// only the controls that the current switches make meaningful.
#include "bubbles/bubbles.h"

void Bubbles::SyncControls() {
    for (ControlQv *control : info.controls()) control->Sync();
    for (VisibilityGroup group :
         {VisibilityGroup::Gravity, VisibilityGroup::Friction, VisibilityGroup::Turbulence, VisibilityGroup::Light,
          VisibilityGroup::LitReflections, VisibilityGroup::Burst, VisibilityGroup::BurstOrGather,
          VisibilityGroup::Growing})
        ShowGroup(group);
}

// Each rule reads its switches afresh from the host, so that a callback can
// apply it right after the host changed a value.
bool Bubbles::GroupShown(VisibilityGroup group) {
    auto on = [](CheckboxControlQv &control) {
        control.Sync();
        return control.GetValue(-1.0);
    };
    switch (group) {
    case VisibilityGroup::Always: return true;
    case VisibilityGroup::Gravity: return on(info.gravityOn);
    case VisibilityGroup::Friction: return on(info.frictionOn);
    case VisibilityGroup::Turbulence: return on(info.turbulenceOn);
    case VisibilityGroup::Light: return on(info.lightOn);
    // Reflections are lit by the light: without it their intensity is moot
    // even while the switch stays on.
    case VisibilityGroup::LitReflections: {
        const bool light = on(info.lightOn);
        return on(info.reflectionsOn) && light;
    }
    case VisibilityGroup::Burst: return on(info.burstOn);
    // Quantity, extent and afterlife serve gathering as well as bursting.
    case VisibilityGroup::BurstOrGather: {
        const bool burst = on(info.burstOn);
        return on(info.congregate) || burst;
    }
    // Assorted sizes never grow, so the time to full size means nothing there.
    case VisibilityGroup::Growing: {
        constexpr long kAssorted = 1;
        return info.growthMode.GetValue(-1.0) != kAssorted;
    }
    }
    return true;
}

void Bubbles::ShowGroup(VisibilityGroup group) {
    const bool visible = GroupShown(group);
#define HIDE_UNLESS_SHOWN(member, shown) \
    if (group == VisibilityGroup::shown) info.member.Hide(!visible);
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, on_change, shown, channel) \
    HIDE_UNLESS_SHOWN(member, shown)
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, on_change, shown, channel) \
    HIDE_UNLESS_SHOWN(member, shown)
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, on_change, shown, channel) \
    HIDE_UNLESS_SHOWN(member, shown)
#define FIZZLE_SWITCH(n, title, value, member, parameter, on_change, shown, channel) HIDE_UNLESS_SHOWN(member, shown)
#define FIZZLE_LIST(n, value, member, parameter, on_change, shown, ...) HIDE_UNLESS_SHOWN(member, shown)
#define FIZZLE_COLOUR(n, value, member, parameter, shown) HIDE_UNLESS_SHOWN(member, shown)
#include "bubbles/controls.def"
#undef HIDE_UNLESS_SHOWN
}
