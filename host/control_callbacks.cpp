// The control callbacks of the effect's parameters (dlcb_ and the control
// number) and the re-render rule that ends every callback.
#include "host/control_callbacks.h"

#include "host/control_binding.h"
#include "host/control_table.h"
#include "host/instance.h"

unsigned long *DefaultCB(int reason, SparkInfoStruct info) {
    if (SparkBoolean34.Value && reason == SPARK_REASON_USER) return SparkProcess(info);
    sparkViewingDraw();
    return nullptr;
}

unsigned long *OverlayCB(int, SparkInfoStruct) {
    sparkViewingDraw();
    return nullptr;
}

unsigned long *parameter_callback(int number, int reason, SparkInfoStruct info) {
    const ControlBinding *binding = binding_for(number);
    if (!binding) return nullptr;
    ControlQv &control = binding->control(Instance.info);
    control.Sync();
    switch (binding->reaction) {
    case Reaction::None:
        break;
    case Reaction::Sync:
    case Reaction::Handler:
    case Reaction::Preset:
        Instance.SyncControls();
        if (binding->handler) (Instance.*binding->handler)(control, handler_value(*binding, control));
        if (binding->reaction == Reaction::Preset) Instance.SyncControls();
        // The host redraws the controls whose visibility the switch changed.
        if (binding->kind == BoundKind::Checkbox) sparkControlUpdate(number);
        break;
    case Reaction::ColourSliders:
        if (number == 71)
            GetBubbleColourCB();
        else
            GetLightColourCB();
        break;
    }
    if (control.WantsDefaultCallback()) return DefaultCB(reason, info);
    return nullptr;
}

#define PARAMETER_CALLBACK(n) \
    unsigned long *dlcb_##n(int reason, SparkInfoStruct info) { return parameter_callback(n, reason, info); }

PARAMETER_CALLBACK(6)
PARAMETER_CALLBACK(7)
PARAMETER_CALLBACK(8)
PARAMETER_CALLBACK(9)
PARAMETER_CALLBACK(10)
PARAMETER_CALLBACK(11)
PARAMETER_CALLBACK(13)
PARAMETER_CALLBACK(14)
PARAMETER_CALLBACK(15)
PARAMETER_CALLBACK(16)
PARAMETER_CALLBACK(17)
PARAMETER_CALLBACK(18)
PARAMETER_CALLBACK(20)
PARAMETER_CALLBACK(21)
PARAMETER_CALLBACK(22)
PARAMETER_CALLBACK(23)
PARAMETER_CALLBACK(24)
PARAMETER_CALLBACK(25)
PARAMETER_CALLBACK(26)
PARAMETER_CALLBACK(29)
PARAMETER_CALLBACK(35)
PARAMETER_CALLBACK(36)
PARAMETER_CALLBACK(37)
PARAMETER_CALLBACK(38)
PARAMETER_CALLBACK(39)
PARAMETER_CALLBACK(40)
PARAMETER_CALLBACK(41)
PARAMETER_CALLBACK(42)
PARAMETER_CALLBACK(43)
PARAMETER_CALLBACK(44)
PARAMETER_CALLBACK(45)
PARAMETER_CALLBACK(46)
PARAMETER_CALLBACK(49)
PARAMETER_CALLBACK(50)
PARAMETER_CALLBACK(51)
PARAMETER_CALLBACK(52)
PARAMETER_CALLBACK(53)
PARAMETER_CALLBACK(54)
PARAMETER_CALLBACK(64)
PARAMETER_CALLBACK(65)
PARAMETER_CALLBACK(66)
PARAMETER_CALLBACK(69)
PARAMETER_CALLBACK(70)
PARAMETER_CALLBACK(71)
PARAMETER_CALLBACK(75)
PARAMETER_CALLBACK(93)
PARAMETER_CALLBACK(94)
PARAMETER_CALLBACK(98)
PARAMETER_CALLBACK(99)
PARAMETER_CALLBACK(100)
PARAMETER_CALLBACK(102)
PARAMETER_CALLBACK(103)
PARAMETER_CALLBACK(104)
PARAMETER_CALLBACK(107)
PARAMETER_CALLBACK(109)
PARAMETER_CALLBACK(111)
PARAMETER_CALLBACK(112)
PARAMETER_CALLBACK(113)
