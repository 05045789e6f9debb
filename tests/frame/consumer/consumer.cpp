// SPDX-License-Identifier: Apache-2.0
#include <cstdio>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"
#include "embedded/zqengine.h"

int main() {
    bifun_column* const x = zqengine_column_create(ZQENGINE_INT, 2);
    bifun_column* const result = zqengine_column_create(ZQENGINE_INT, 2);
    zqengine_column_set_int(x, 0, 1);
    const bifun_int_constant seven{1, 7};
    if (bnvl_int_av(nullptr, nullptr, x, &seven, result, 2) != BIFUN_OK) {
        return 1;
    }
    const auto* const values = static_cast<const int*>(result->data->values);
    std::printf("%zu %d %d\n", std::size(bifun::entry_points), values[0], values[1]);
    const bool right = values[0] == 1 && values[1] == 7;
    zqengine_column_destroy(x);
    zqengine_column_destroy(result);
    return right ? 0 : 1;
}
