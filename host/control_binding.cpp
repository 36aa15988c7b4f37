// The bindings between the host control table and the effect's framework
// controls, and the per-frame refresh of the controls' caches.
#include "host/control_binding.h"

#include "host/control_table.h"

namespace {

#define CONTROL(member) [](BubblesInfo &info) -> ControlQv & { return info.member; }

const ControlBinding kBindings[] = {
    {29, BoundKind::List, CONTROL(demos), Reaction::Preset, &Bubbles::DemosCB},
    {6, BoundKind::Button, CONTROL(restart[0]), Reaction::Handler, &Bubbles::RestartCB},
    {35, BoundKind::Button, CONTROL(restart[1]), Reaction::Handler, &Bubbles::RestartCB},
    {64, BoundKind::Button, CONTROL(restart[2]), Reaction::Handler, &Bubbles::RestartCB},
    {7, BoundKind::Button, CONTROL(restartPreRoll[0]), Reaction::Handler, &Bubbles::RestartPreRollCB},
    {36, BoundKind::Button, CONTROL(restartPreRoll[1]), Reaction::Handler, &Bubbles::RestartPreRollCB},
    {65, BoundKind::Button, CONTROL(restartPreRoll[2]), Reaction::Handler, &Bubbles::RestartPreRollCB},
    {8, BoundKind::Button, CONTROL(doPreRoll[0]), Reaction::Handler, &Bubbles::PreRollCB},
    {37, BoundKind::Button, CONTROL(doPreRoll[1]), Reaction::Handler, &Bubbles::PreRollCB},
    {66, BoundKind::Button, CONTROL(doPreRoll[2]), Reaction::Handler, &Bubbles::PreRollCB},
    {9, BoundKind::Integer, CONTROL(preRoll), Reaction::None, nullptr},
    {10, BoundKind::Button, CONTROL(advance), Reaction::Sync, nullptr},
    {26, BoundKind::Integer, CONTROL(seed), Reaction::None, nullptr},
    {11, BoundKind::Position, CONTROL(left), Reaction::None, nullptr},
    {18, BoundKind::Position, CONTROL(right), Reaction::None, nullptr},
    {17, BoundKind::Size, CONTROL(positionVar), Reaction::None, nullptr},
    {16, BoundKind::Float, CONTROL(density), Reaction::None, nullptr},
    {13, BoundKind::Float, CONTROL(lifetime), Reaction::None, nullptr},
    {14, BoundKind::Integer, CONTROL(timeMaxSize), Reaction::None, nullptr},
    {15, BoundKind::Checkbox, CONTROL(useBirthMatte), Reaction::Sync, nullptr},
    {20, BoundKind::Float, CONTROL(initialVelocity), Reaction::None, nullptr},
    {21, BoundKind::Float, CONTROL(velocityVar), Reaction::None, nullptr},
    {22, BoundKind::Angle, CONTROL(velDir), Reaction::None, nullptr},
    {23, BoundKind::List, CONTROL(growthMode), Reaction::Handler, &Bubbles::GrowthModeCB},
    {24, BoundKind::Float, CONTROL(bubbleSize), Reaction::None, nullptr},
    {25, BoundKind::Float, CONTROL(bubbleSizeVar), Reaction::None, nullptr},
    {69, BoundKind::Float, CONTROL(colourVar), Reaction::None, nullptr},
    {70, BoundKind::Float, CONTROL(monoVar), Reaction::None, nullptr},
    {71, BoundKind::Colour, CONTROL(bubbleColour), Reaction::ColourSliders, nullptr},
    {75, BoundKind::List, CONTROL(fadeMode), Reaction::Sync, nullptr},
    {44, BoundKind::Checkbox, CONTROL(gravityOn), Reaction::Handler, &Bubbles::DoGravityCB},
    {45, BoundKind::Float, CONTROL(gravity), Reaction::None, nullptr},
    {46, BoundKind::Angle, CONTROL(gravAngle), Reaction::None, nullptr},
    {42, BoundKind::Checkbox, CONTROL(frictionOn), Reaction::Handler, &Bubbles::DoFrictionCB},
    {43, BoundKind::Float, CONTROL(friction), Reaction::None, nullptr},
    {38, BoundKind::Checkbox, CONTROL(turbulenceOn), Reaction::Handler, &Bubbles::DoTurbulenceCB},
    {39, BoundKind::Float, CONTROL(swirlDens), Reaction::None, nullptr},
    {40, BoundKind::Float, CONTROL(swirlAmp), Reaction::None, nullptr},
    {41, BoundKind::Float, CONTROL(swirlMaxTime), Reaction::None, nullptr},
    {49, BoundKind::Checkbox, CONTROL(burstOn), Reaction::Handler, &Bubbles::DoBubblesBurstCB},
    {50, BoundKind::Float, CONTROL(burstProbability), Reaction::None, nullptr},
    {51, BoundKind::Float, CONTROL(burstQuantity), Reaction::None, nullptr},
    {52, BoundKind::Float, CONTROL(burstExtent), Reaction::None, nullptr},
    {53, BoundKind::Integer, CONTROL(afterlife), Reaction::None, nullptr},
    {54, BoundKind::Checkbox, CONTROL(congregate), Reaction::Handler, &Bubbles::DoCongregateCB},
    {93, BoundKind::Checkbox, CONTROL(lightOn), Reaction::Handler, &Bubbles::DoLightCB},
    {100, BoundKind::Position, CONTROL(lightSource), Reaction::None, nullptr},
    {107, BoundKind::Position, CONTROL(lightTarget), Reaction::None, nullptr},
    {109, BoundKind::Float, CONTROL(lightZ), Reaction::None, nullptr},
    {104, BoundKind::Float, CONTROL(glistenTight), Reaction::None, nullptr},
    {103, BoundKind::Angle, CONTROL(lightSpread), Reaction::None, nullptr},
    {102, BoundKind::Float, CONTROL(lightIntensity), Reaction::None, nullptr},
    {111, BoundKind::Float, CONTROL(minBright), Reaction::None, nullptr},
    {112, BoundKind::Float, CONTROL(shine), Reaction::None, nullptr},
    {113, BoundKind::Float, CONTROL(highlight), Reaction::None, nullptr},
    {94, BoundKind::Colour, CONTROL(lightColour), Reaction::ColourSliders, nullptr},
    {98, BoundKind::Checkbox, CONTROL(reflectionsOn), Reaction::Handler, &Bubbles::DoReflectionsCB},
    {99, BoundKind::Float, CONTROL(refIntensity), Reaction::None, nullptr},
    // Its own callback is the page-common Auto1CB; bound so the cache follows.
    {34, BoundKind::Checkbox, CONTROL(autoPreview), Reaction::None, nullptr},
};

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

uint16_t fifteen_bits(uint32_t word, int shift) {
    const uint32_t byte = (word >> shift) & 0xFFu;
    return uint16_t((byte << 7) | (byte >> 1));
}

void refresh(const ControlBinding &binding, ControlQv &control) {
    if (!control.bound()) return;
    switch (binding.kind) {
    case BoundKind::Button:
        break;
    case BoundKind::Integer: {
        auto &integer = static_cast<IntegerControlQv &>(control);
        integer.cached = integer.record()->Value;
        break;
    }
    case BoundKind::Float:
    case BoundKind::Angle: {
        auto &number = static_cast<FloatControlQv &>(control);
        number.cached = number.record()->Value;
        break;
    }
    case BoundKind::Size: {
        auto &size = static_cast<SizeControlQv &>(control);
        size.cached = size.record()->Value / 100.0;
        break;
    }
    case BoundKind::Position: {
        auto &position = static_cast<PositionControlQv &>(control);
        position.cached_x = position.x_record()->Value / 100.0;
        position.cached_y = position.y_record ? position.y_record->Value / 100.0 : 0.0;
        break;
    }
    case BoundKind::Checkbox: {
        auto &checkbox = static_cast<CheckboxControlQv &>(control);
        checkbox.checked = checkbox.record()->Value != 0;
        break;
    }
    case BoundKind::List: {
        auto &list = static_cast<ListControlQv &>(control);
        list.cached = list.record()->Value + 1;
        break;
    }
    case BoundKind::Colour: {
        auto &colour = static_cast<ColourControlQv &>(control);
        const uint32_t word = colour.record()->Value;
        for (int i = 0; i < 3; ++i) colour.cached[i] = fifteen_bits(word, 8 * i);
        colour.cached[3] = 0x7FFF;
        break;
    }
    }
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

    BubblesInfo &info = effect.info;
    OverlayQv *overlay = &effect;
    auto record = [](int number) { return structure_of<SparkFloatStruct>(number); };
    info.leftCross.Bind(overlay, 11, record(11), record(12));
    info.rightCross.Bind(overlay, 18, record(18), record(19));
    info.emitterLine.Bind(overlay, 11, record(11), record(12), 18, record(18), record(19));
    info.lightSourceCross.Bind(overlay, 100, record(100), record(101));
    info.lightTargetCross.Bind(overlay, 107, record(107), record(108));
    info.lightLine.Bind(overlay, 100, record(100), record(101), 107, record(107), record(108));
    info.coneEditor.index = 103;
    info.coneEditor.record = record(103);
    info.coneEditor.overlay = overlay;
}

void refresh_control_caches(Bubbles &effect) {
    for (const ControlBinding &binding : kBindings) refresh(binding, binding.control(effect.info));
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
