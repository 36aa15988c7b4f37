// Integer, float, angle and size controls: numbers on one host entry.
#include "framework/controls.h"

namespace {

// Integer and float records keep their range alike: saved at binding (or
// given by the effect), frozen at the value while the control is disabled.
template <class Record>
void save_range(const AuxQv *aux, const Record *record, double *saved) {
    if (aux && aux->has_range) {
        saved[0] = aux->range[0];
        saved[1] = aux->range[1];
    } else if (record) {
        saved[0] = record->Min;
        saved[1] = record->Max;
    }
}

template <class Record>
void freeze_range(Record *host, bool freeze, const double *saved) {
    using Value = decltype(host->Min);
    if (freeze) {
        host->Min = host->Max = host->Value;
    } else {
        host->Min = static_cast<Value>(saved[0]);
        host->Max = static_cast<Value>(saved[1]);
    }
}

}  // namespace

// ---- IntegerControlQv ------------------------------------------------------

void IntegerControlQv::Bound() { save_range(aux, record(), saved_range); }

void IntegerControlQv::Sync() {
    if (bound()) cached = record()->Value;
}

void IntegerControlQv::GetValue(double frame, long &value) const {
    if (frame < 0.0 || !bound())
        value = cached;
    else
        value = static_cast<long>(sparkGetCurveValuef(SPARK_CURVE_CONTROL, index,
                                                      static_cast<float>(frame)));
}

long IntegerControlQv::GetValue(double frame) const {
    long value;
    GetValue(frame, value);
    return value;
}

void IntegerControlQv::SetValue(double, long value) {
    if (!bound()) return;
    record()->Value = static_cast<int32_t>(value);
    sparkControlUpdate(index);
    Sync();
}

void IntegerControlQv::ShowDisabled(bool flag) {
    freeze_range(record(), flag, saved_range);
    MarkDisabled(record()->Title, flag);
}

// ---- float records: FloatControlQv, AngleControlQv, SizeControlQv ----------

void FloatRecordControlQv::Bound() { save_range(aux, record(), saved_range); }

void FloatRecordControlQv::ShowDisabled(bool flag) {
    freeze_range(record(), flag, saved_range);
    MarkDisabled(record()->Title, flag);
}

void FloatControlQv::Sync() {
    if (bound()) cached = record()->Value;
}

void FloatControlQv::GetValue(double frame, double &value) const {
    if (frame < 0.0 || !bound())
        value = cached;
    else
        value = sparkGetCurveValuef(SPARK_CURVE_CONTROL, index, static_cast<float>(frame));
}

double FloatControlQv::GetValue(double frame) const {
    double value;
    GetValue(frame, value);
    return value;
}

void FloatControlQv::SetValue(double, double value) {
    if (!bound()) return;
    record()->Value = static_cast<float>(value);
    sparkControlUpdate(index);
    Sync();
}

void SizeControlQv::Sync() {
    if (bound()) cached = record()->Value / 100.0;
}

// Kept on purpose: a static read divides the already divided cache once
// more; effects that want the size read it at a frame of 0 or more.
void SizeControlQv::GetValue(double frame, double &value) const {
    if (frame < 0.0 || !bound())
        value = cached / 100.0;
    else
        value = sparkGetCurveValuef(SPARK_CURVE_CONTROL, index, static_cast<float>(frame)) / 100.0;
}

double SizeControlQv::GetValue(double frame) const {
    double value;
    GetValue(frame, value);
    return value;
}

void SizeControlQv::SetValue(double, double value) {
    if (!bound()) return;
    record()->Value = static_cast<float>(100.0 * value);
    sparkControlUpdate(index);
    Sync();
}
