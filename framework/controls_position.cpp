// PositionControlQv: a point as fractions of the frame on an X and a Y entry.
#include "framework/controls.h"

void PositionControlQv::Bound() {
    y_record = aux ? aux->y : nullptr;
    if (aux && aux->has_range) {
        for (int i = 0; i < 4; ++i) saved_range[i] = aux->range[i];
        return;
    }
    if (x_record()) {
        saved_range[0] = x_record()->Min;
        saved_range[1] = x_record()->Max;
    }
    if (y_record) {
        saved_range[2] = y_record->Min;
        saved_range[3] = y_record->Max;
    }
}

void PositionControlQv::Refresh() {
    if (!bound()) return;
    cached_x = x_record()->Value / 100.0;
    cached_y = y_record ? y_record->Value / 100.0 : 0.0;
}

void PositionControlQv::GetValue(double frame, double &x, double &y) const {
    if (frame < 0.0 || !bound()) {
        x = cached_x / 100.0;
        y = cached_y / 100.0;
        return;
    }
    float at = static_cast<float>(frame);
    x = sparkGetCurveValuef(SPARK_CURVE_CONTROL, index, at) / 100.0;
    y = sparkGetCurveValuef(SPARK_CURVE_CONTROL, index + 1, at) / 100.0;
}

void PositionControlQv::SetValue(double, double x, double y) {
    if (!bound()) return;
    x_record()->Value = static_cast<float>(100.0 * x);
    if (y_record) y_record->Value = static_cast<float>(100.0 * y);
    sparkControlUpdate(index);
    sparkControlUpdate(index + 1);
    Sync();
}

void PositionControlQv::ShowDisabled(bool flag) {
    SparkFloatStruct *records[2] = {x_record(), y_record};
    for (int i = 0; i < 2; ++i) {
        SparkFloatStruct *host = records[i];
        if (!host) continue;
        if (flag) {
            host->Min = host->Max = host->Value;
        } else {
            host->Min = static_cast<float>(saved_range[2 * i]);
            host->Max = static_cast<float>(saved_range[2 * i + 1]);
        }
        MarkTitle(host->Title, flag);
        sparkControlUpdate(index + i);
    }
    sparkControlUpdate(index);
}

void PositionControlQv::HideMoreEntries(bool flag) const { ShowEntry(index + 1, flag); }
