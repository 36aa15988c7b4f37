// The tables of UnitPower.
#include "bubbles/render/unit_power.h"

#include <cmath>

UnitPower::UnitPower(double exponent)
    : s_(exponent), usable_(exponent > 0.0 && exponent <= 1024.0),
      whole_(usable_ && exponent >= 1.0 && std::floor(exponent) == exponent ? uint32_t(exponent) : 0u),
      tables_(&UnitPowerTables::get()) {}

const UnitPowerTables &UnitPowerTables::get() {
    static const UnitPowerTables tables = [] {
        UnitPowerTables t{};
        for (int i = 0; i < 256; ++i) {
            const double cut = 1.0 + i / 256.0;
            t.log2_cut[i] = std::log2(cut);
            t.inverse_cut[i] = 1.0 / cut;
        }
        for (int j = 0; j < 64; ++j) t.exp2_step[j] = std::exp2(j / 64.0);
        return t;
    }();
    return tables;
}
