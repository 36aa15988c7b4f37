// The control callbacks of the effect's parameters: dlcb_ and the control
// number.
#include "host/glue/control_callbacks.h"

#include "host/glue/control_binding.h"
#include "host/glue/control_callbacks_colour.h"
#include "host/glue/control_table.h"
#include "host/glue/default_callbacks.h"
#include "host/glue/fizzle_effect.h"

unsigned long *parameter_callback(int number, int reason, SparkInfoStruct info) {
    const ControlBinding *binding = binding_for(number);
    if (!binding) return nullptr;
    Bubbles &effect = fizzle_effect();
    ControlQv &control = binding->control(effect.info);
    control.Sync();
    switch (binding->reaction) {
    case Reaction::None:
        break;
    case Reaction::Sync:
    case Reaction::Handler:
    case Reaction::Preset:
        effect.SyncControls();
        if (binding->handler) (effect.*binding->handler)(control, handler_value(*binding, control));
        if (binding->reaction == Reaction::Preset) effect.SyncControls();
        // The host redraws the controls whose visibility the switch changed.
        if (binding->kind == BoundKind::Checkbox) sparkControlUpdate(number);
        break;
    case Reaction::ColourSliders:
        if (number == number_of::bubbleColour)
            GetBubbleColourCB();
        else
            GetLightColourCB();
        break;
    }
    if (control.WantsDefaultCallback()) return DefaultCB(reason, info);
    return nullptr;
}

// Every control of the effect calls back through dlcb_<number>.
#define PARAMETER_CALLBACK(n, ...) \
    unsigned long *dlcb_##n(int reason, SparkInfoStruct info) { return parameter_callback(n, reason, info); }
#define FIZZLE_BUTTON PARAMETER_CALLBACK
#define FIZZLE_INT PARAMETER_CALLBACK
#define FIZZLE_FLOAT PARAMETER_CALLBACK
#define FIZZLE_POSITION_X PARAMETER_CALLBACK
#define FIZZLE_POSITION_Y PARAMETER_CALLBACK
#define FIZZLE_SWITCH PARAMETER_CALLBACK
#define FIZZLE_LIST PARAMETER_CALLBACK
#define FIZZLE_COLOUR PARAMETER_CALLBACK
#define FIZZLE_DEMOS PARAMETER_CALLBACK
#include "bubbles/controls.def"
#undef PARAMETER_CALLBACK
