// Proxy divisor chosen by the resolution list.
#include "host/adapter/proxy_divisor.h"

int ProxyDivisorFor(int resolution_value) {
    static const int kDivisors[] = {1, 2, 3, 4, 6, 8, 12, 16, 32};
    if (resolution_value < 0 || resolution_value > 8) return 1;
    return kDivisors[resolution_value];
}
