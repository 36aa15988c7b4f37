// ControlQv: binding to the host's entries, and what every control shares.
#include "framework/controls.h"

#include <cstdio>
#include <cstring>

void ControlQv::Bind(int entry, void *record, AuxQv *auxiliary) {
    index = entry;
    host_value = record;
    aux = auxiliary;
    host_flags[0] = 0;
    host_flags[1] = 1;
    Bound();
}

void ControlQv::Disable(bool flag) {
    bool changed = flag != bool(disabled);
    disabled = flag;
    if (changed && bound()) ShowDisabled(flag);
}

void ControlQv::Hide(bool flag) {
    hidden = flag;
    if (!bound()) return;
    ShowEntry(index, flag);
    HideMoreEntries(flag);
}

void ControlQv::MarkDisabled(const char *title, bool disabling) const {
    MarkTitle(title, disabling);
    sparkControlUpdate(index);
}

void ControlQv::ShowEntry(int entry, bool flag) const {
    if (flag)
        sparkDisableParameter(SPARK_UI_CONTROL, entry);
    else
        sparkEnableParameter(SPARK_UI_CONTROL, entry);
}

// Kept on purpose: the marked title goes to a scratch buffer and nowhere
// else, so freezing a control never changes what the host shows as its title.
void ControlQv::MarkTitle(const char *title, bool disabling) {
    static char scratch[SPARK_STRING_LENGTH + 2];
    if (!title) title = "";
    size_t length = strnlen(title, SPARK_STRING_LENGTH);
    while (length > 0 && (title[length - 1] == ' ' || title[length - 1] == '\n')) --length;
    if (disabling) {
        std::snprintf(scratch, sizeof scratch, "%.*s*", static_cast<int>(length), title);
    } else {
        while (length > 0 && title[length - 1] == '*') --length;
        std::snprintf(scratch, sizeof scratch, "%.*s", static_cast<int>(length), title);
    }
}
