// Checkbox, list and button controls.
#include "framework/controls.h"

// ---- CheckboxControlQv ----------------------------------------------------

void CheckboxControlQv::Bound() { group = aux ? aux->group : nullptr; }

void CheckboxControlQv::Sync() {
    if (bound()) checked = record()->Value != 0;
}

void CheckboxControlQv::GetValue(double, bool &value) const { value = checked != 0; }

bool CheckboxControlQv::GetValue(double frame) const {
    bool value;
    GetValue(frame, value);
    return value;
}

void CheckboxControlQv::SetValue(double, int value) {
    if (!bound()) return;
    record()->Value = static_cast<uint8_t>(value);
    sparkControlUpdate(index);
    if (value == 1 && group) {
        for (const RadioMemberQv &member : group->members) {
            if (!member.record || member.record == record()) continue;
            member.record->Value = 0;
            sparkControlUpdate(member.index);
        }
    }
    Sync();
}

void CheckboxControlQv::ShowDisabled(bool flag) { MarkDisabled(record()->Title, flag); }

// ---- ListControlQv ----------------------------------------------------------

void ListControlQv::Sync() {
    if (bound()) cached = record()->Value + 1;
}

void ListControlQv::GetValue(double, long &value) {
    if (bound()) cached = record()->Value + 1;
    value = cached;
}

long ListControlQv::GetValue(double frame) {
    long value;
    GetValue(frame, value);
    return value;
}

void ListControlQv::SetValue(double, long value) {
    if (!bound()) return;
    record()->Value = static_cast<int32_t>(value - 1);
    sparkControlUpdate(index);
    Sync();
}

void ListControlQv::ShowDisabled(bool flag) {
    const SparkPupStruct *host = record();
    bool valid = host->Value >= 0 && host->Value < SPARK_PUP_MAX_ENTRIES;
    MarkDisabled(valid ? host->Titles[host->Value] : nullptr, flag);
}

// ---- ButtonControlQv --------------------------------------------------------

void ButtonControlQv::ShowDisabled(bool flag) { MarkDisabled(record()->Title, flag); }
