#include <cstdio>

#include "bop/bifun.h"
#include "bop/frame/catalogue.h"
#include "embedded/columns/column_storage.h"
#include "embedded/session/environment.h"

int main() {
    const zqengine::column_pointer x(zqengine::create_column(bifun::value_type::INT, 2));
    const zqengine::column_pointer result(zqengine::create_column(bifun::value_type::INT, 2));
    x->data.null_flags[0] = 1;
    zqengine::values_of<int>(*x)[0] = 1;
    const bifun_int_constant seven{1, 7};
    bifun_environment environment;
    if (bnvl_int_av(&environment, nullptr, &x->column, &seven, &result->column, 2) != BIFUN_OK) {
        return 1;
    }
    std::printf("%zu %d %d\n", std::size(bifun::entry_points), zqengine::values_of<int>(*result)[0], zqengine::values_of<int>(*result)[1]);
    return zqengine::values_of<int>(*result)[0] == 1 && zqengine::values_of<int>(*result)[1] == 7 ? 0 : 1;
}
