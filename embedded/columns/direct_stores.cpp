// That the library may store results itself. The symbols are declared in engine/columns.h, where they are weak because an engine may leave
// them out; they are defined without sight of that declaration, which would make the definitions weak too. Tests and benchmarks set them
// to 0.
#include <cstdint>

extern "C" {
extern std::int32_t bdta3_setters_are_plain_stores;
std::int32_t bdta3_setters_are_plain_stores = 1;

extern std::int32_t bdta3_free_bytes_are_open;
std::int32_t bdta3_free_bytes_are_open = 1;
}
