// The bindings between the host control table and the effect's framework
// controls, and the per-frame refresh of the controls' caches.
#include "host/glue/control_binding.h"

#include "host/glue/control_table.h"

namespace {

template <class Control>
constexpr BoundKind kFloatKind = BoundKind::Float;
template <>
constexpr BoundKind kFloatKind<AngleControlQv> = BoundKind::Angle;
template <>
constexpr BoundKind kFloatKind<SizeControlQv> = BoundKind::Size;

#define CONTROL(member) [](BubblesInfo &info) -> ControlQv & { return info.member; }
#define KEEP Reaction::None, nullptr
#define SYNC Reaction::Sync, nullptr
#define CALL(handler) Reaction::Handler, &Bubbles::handler

const ControlBinding kBindings[] = {
#define FIZZLE_BUTTON(n, title, member, on_change) {n, BoundKind::Button, CONTROL(member), on_change},
#define FIZZLE_INT(n, title, value, min, max, step, flags, member, parameter, on_change, shown, channel) \
    {n, BoundKind::Integer, CONTROL(member), on_change},
#define FIZZLE_FLOAT(n, title, value, min, max, step, cls, member, parameter, on_change, shown, channel) \
    {n, kFloatKind<cls>, CONTROL(member), on_change},
#define FIZZLE_POSITION_X(n, title, value, min, max, step, member, parameter, on_change, shown, channel) \
    {n, BoundKind::Position, CONTROL(member), on_change},
#define FIZZLE_SWITCH(n, title, value, member, parameter, on_change, shown, channel) \
    {n, BoundKind::Checkbox, CONTROL(member), on_change},
#define FIZZLE_MIRRORED_SWITCH(n, title, value, callback, member) {n, BoundKind::Checkbox, CONTROL(member), KEEP},
#define FIZZLE_LIST(n, value, member, parameter, on_change, shown, ...) {n, BoundKind::List, CONTROL(member), on_change},
#define FIZZLE_DEMOS(n, value, member, ...) \
    {n, BoundKind::List, CONTROL(member), Reaction::Preset, &Bubbles::DemosCB},
#define FIZZLE_COLOUR(n, value, member, parameter, shown) \
    {n, BoundKind::Colour, CONTROL(member), Reaction::ColourSliders, nullptr},
#include "bubbles/controls.def"
};

#undef CALL
#undef SYNC
#undef KEEP
#undef CONTROL

constexpr int kBindingCount = int(sizeof kBindings / sizeof kBindings[0]);

// The ranges restored when a frozen control thaws, from the table; one per
// binding, living as long as the controls.
AuxQv aux_records[kBindingCount];

template <class Structure>
Structure *structure_of(int number) {
    const HostControl *control = find_host_control(number);
    return control ? static_cast<Structure *>(control->structure) : nullptr;
}

void fill_aux(const ControlBinding &binding, AuxQv &aux) {
    aux = AuxQv{};
    const HostControl *first = find_host_control(binding.number);
    switch (binding.kind) {
    case BoundKind::Integer:
    case BoundKind::Float:
    case BoundKind::Angle:
    case BoundKind::Size:
        aux.has_range = true;
        aux.range[0] = first->minimum;
        aux.range[1] = first->maximum;
        break;
    case BoundKind::Position: {
        const HostControl *second = find_host_control(binding.number + 1);
        aux.y = static_cast<SparkFloatStruct *>(second->structure);
        aux.has_range = true;
        aux.range[0] = first->minimum;
        aux.range[1] = first->maximum;
        aux.range[2] = second->minimum;
        aux.range[3] = second->maximum;
        break;
    }
    case BoundKind::Colour:
        for (int i = 0; i < 3; ++i) aux.sliders[i] = structure_of<SparkFloatStruct>(binding.number + 1 + i);
        break;
    case BoundKind::Button:
    case BoundKind::Checkbox:
    case BoundKind::List:
        break;
    }
}

// Each widget drags the controls named here; a position's Y follows its X.
void bind_overlay_widgets(Bubbles &effect) {
    BubblesInfo &info = effect.info;
    OverlayQv *overlay = &effect;
    auto record = [](int number) { return structure_of<SparkFloatStruct>(number); };
    auto cross = [&](CrosshairOverlayQv &widget, int x) { widget.Bind(overlay, x, record(x), record(x + 1)); };
    auto line = [&](LineOverlayQv &widget, int x, int x2) {
        widget.Bind(overlay, x, record(x), record(x + 1), x2, record(x2), record(x2 + 1));
    };
    cross(info.leftCross, number_of::left);
    cross(info.rightCross, number_of::right);
    line(info.emitterLine, number_of::left, number_of::right);
    cross(info.lightSourceCross, number_of::lightSource);
    cross(info.lightTargetCross, number_of::lightTarget);
    line(info.lightLine, number_of::lightSource, number_of::lightTarget);
    info.coneEditor.index = number_of::lightSpread;
    info.coneEditor.record = record(number_of::lightSpread);
    info.coneEditor.overlay = overlay;
}

}  // namespace

const ControlBinding *binding_for(int number) {
    for (const ControlBinding &binding : kBindings) {
        if (binding.number == number) return &binding;
        if (binding.kind == BoundKind::Position && binding.number + 1 == number) return &binding;
    }
    return nullptr;
}

ControlQv *framework_control(BubblesInfo &info, int number) {
    const ControlBinding *binding = binding_for(number);
    return binding ? &binding->control(info) : nullptr;
}

void bind_effect_controls(Bubbles &effect) {
    for (int i = 0; i < kBindingCount; ++i) {
        const ControlBinding &binding = kBindings[i];
        fill_aux(binding, aux_records[i]);
        binding.control(effect.info).Bind(binding.number, find_host_control(binding.number)->structure,
                                          &aux_records[i]);
    }

    bind_overlay_widgets(effect);
}

void refresh_control_caches(Bubbles &effect) {
    for (ControlQv *control : effect.info.controls()) control->Refresh();
}

double handler_value(const ControlBinding &binding, ControlQv &control) {
    switch (binding.kind) {
    case BoundKind::Checkbox: return static_cast<CheckboxControlQv &>(control).GetValue(-1.0) ? 1.0 : 0.0;
    case BoundKind::List: return double(static_cast<ListControlQv &>(control).GetValue(-1.0));
    case BoundKind::Integer: return double(static_cast<IntegerControlQv &>(control).GetValue(-1.0));
    case BoundKind::Float:
    case BoundKind::Angle: return static_cast<FloatControlQv &>(control).GetValue(-1.0);
    case BoundKind::Size: return static_cast<SizeControlQv &>(control).cached;
    case BoundKind::Button:
    case BoundKind::Position:
    case BoundKind::Colour: break;
    }
    return 0.0;
}
