// The callbacks of the block every page repeats (resolution, "Auto Preview",
// "Clear Overlay", "Reset") and of "Blend": the four copies stay equal.
#include "host/glue/control_binding.h"
#include "host/glue/control_table.h"
#include "host/glue/default_callbacks.h"
#include "host/glue/fizzle_effect.h"

namespace {

constexpr int kPages = SPARK_PAGE_COUNT;
constexpr int kBlend = 27;

// The number of the same control on another page.
int on_page(int number, int page) {
    const int place = (number - SPARK_FIRST_PAGE_CONTROL) % SPARK_CONTROLS_PER_PAGE;
    return SPARK_FIRST_PAGE_CONTROL + page * SPARK_CONTROLS_PER_PAGE + place;
}

// Updates the control the user changed and copies its value to its
// copies on the other pages.
template <class Structure>
void spread_to_pages(int number) {
    sparkControlUpdate(number);
    const auto *own = static_cast<Structure *>(find_host_control(number)->structure);
    for (int page = 0; page < kPages; ++page) {
        const int other = on_page(number, page);
        if (other != number) static_cast<Structure *>(find_host_control(other)->structure)->Value = own->Value;
    }
}

unsigned long *set_resolution(int number, SparkInfoStruct info) {
    spread_to_pages<SparkPupStruct>(number);
    // A new proxy size is always shown, preview or not.
    return SparkProcess(info);
}

unsigned long *set_auto_preview(int number, int reason, SparkInfoStruct info) {
    spread_to_pages<SparkBooleanStruct>(number);
    return DefaultCB(reason, info);
}

unsigned long *set_clear_overlay(int number, int reason, SparkInfoStruct info) {
    spread_to_pages<SparkBooleanStruct>(number);
    return OverlayCB(reason, info);
}

unsigned long *reset_page(int page, int reason, SparkInfoStruct info) {
    if (sparkMessageConfirm("Are you sure you want to reset the current settings to default values?")) {
        Bubbles &effect = fizzle_effect();
        if (page == 0) static_cast<SparkPupStruct *>(find_host_control(number_of::demos)->structure)->Value = 0;
        for (const HostControl &control : host_controls()) {
            if (host_control_page(control.number) != page || is_page_common_control(control.number)) continue;
            if (control.kind == HostControlKind::Push || control.kind == HostControlKind::String) continue;
            write_host_default(control);
            sparkControlUpdate(control.number);
            if (ControlQv *framework = framework_control(effect.info, control.number)) framework->Sync();
        }
        for (ControlQv *control : effect.info.controls()) control->Sync();
        effect.SyncControls();
    }
    return DefaultCB(reason, info);
}

}  // namespace

unsigned long *SetRes1CB(int, SparkInfoStruct info) { return set_resolution(33, info); }
unsigned long *SetRes2CB(int, SparkInfoStruct info) { return set_resolution(62, info); }
unsigned long *SetRes3CB(int, SparkInfoStruct info) { return set_resolution(91, info); }
unsigned long *SetRes4CB(int, SparkInfoStruct info) { return set_resolution(120, info); }

unsigned long *Auto1CB(int reason, SparkInfoStruct info) { return set_auto_preview(34, reason, info); }
unsigned long *Auto2CB(int reason, SparkInfoStruct info) { return set_auto_preview(63, reason, info); }
unsigned long *Auto3CB(int reason, SparkInfoStruct info) { return set_auto_preview(92, reason, info); }
unsigned long *Auto4CB(int reason, SparkInfoStruct info) { return set_auto_preview(121, reason, info); }

unsigned long *Overlay1CB(int reason, SparkInfoStruct info) { return set_clear_overlay(28, reason, info); }
unsigned long *Overlay2CB(int reason, SparkInfoStruct info) { return set_clear_overlay(57, reason, info); }
unsigned long *Overlay3CB(int reason, SparkInfoStruct info) { return set_clear_overlay(86, reason, info); }
unsigned long *Overlay4CB(int reason, SparkInfoStruct info) { return set_clear_overlay(115, reason, info); }

unsigned long *Reset1CB(int reason, SparkInfoStruct info) { return reset_page(0, reason, info); }
unsigned long *Reset2CB(int reason, SparkInfoStruct info) { return reset_page(1, reason, info); }
unsigned long *Reset3CB(int reason, SparkInfoStruct info) { return reset_page(2, reason, info); }
unsigned long *Reset4CB(int reason, SparkInfoStruct info) { return reset_page(3, reason, info); }

// The blend is applied by the frame cycle itself; a change re-renders only
// while the viewer shows the result.
unsigned long *Blend1CB(int reason, SparkInfoStruct info) {
    sparkViewingDraw();
    if (info.ViewerState == 1 && reason == SPARK_REASON_USER) {
        sparkControlUpdate(kBlend);
        return DefaultCB(SPARK_REASON_USER, info);
    }
    return nullptr;
}
