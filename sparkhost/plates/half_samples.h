// Float and half samples, converted eight at a time with the processor's
// conversion instructions where it has them. The image library's own
// conversion is one sample at a time in this build, and it was an eighth of
// a layer render's time. The results are the library's bit for bit: both
// round to nearest even, and NaNs, which the instructions would quieten,
// take the library's path so a plate's NaN payloads survive.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sparkhost {

void floats_to_halves(const float *from, uint16_t *to, std::size_t count);
void halves_to_floats(const uint16_t *from, float *to, std::size_t count);

}  // namespace sparkhost
