/* SPDX-License-Identifier: Apache-2.0 */
#include <stdio.h>

#include "bop/bifun.h"
#include "engine/decimal.h"

int main(void) {
    xdec product;
    if (bifun_dll_var_init(1, 1, 1) != BIFUN_OK || xdec_from_int64(&product, -6, XDEC_ANY_PRECISION) != 0 ||
        xdec_mul(&product, &product, &product) != 0) {
        return 1;
    }
    printf("%g\n", xdec_to_double(&product));
    return xdec_to_double(&product) == 36.0 ? 0 : 1;
}
