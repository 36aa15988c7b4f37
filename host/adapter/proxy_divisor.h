// Proxy divisor chosen by the resolution list ("FULL", "1/2" ... "1/32").
#pragma once

// 1 for "FULL" and for any value outside the list.
int ProxyDivisorFor(int resolution_value);
