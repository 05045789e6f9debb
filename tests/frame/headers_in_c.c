/* The public headers are C11: every one of them, twice, and every export has a C prototype. */
#include "bop/bifun.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/memory.h"
#include "engine/strings.h"

#include "bop/bifun.h"
#include "engine/charset.h"
#include "engine/columns.h"
#include "engine/datetime.h"
#include "engine/decimal.h"
#include "engine/memory.h"
#include "engine/strings.h"

int32_t (*const an_entry_point)(bifun_environment*, bifun_memory_object*, const bifun_column*, const bifun_int_constant*, bifun_column*,
                                uint32_t) = bnvl_int_av;
int32_t (*const a_setter)(bifun_environment*, bifun_memory_object*, bifun_column*, uint32_t, const bifun_int_constant*) = bdta3_set_int;
const bifun_settings* const the_settings = &global_bifun_var;

int main(void) { return an_entry_point != NULL && a_setter != NULL && BIFUN_OUT_OF_MEMORY == -503 ? 0 : 1; }
