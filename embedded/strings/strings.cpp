// SPDX-License-Identifier: Apache-2.0
#include "engine/strings.h"

#include <cstring>

#include "bop/frame/status.h"

namespace {

constexpr int blank = 0x20;

const uint8_t* bytes_of(const bifun_string_constant& constant) {
    return constant.length > BIFUN_INLINE_LENGTH ? constant.data : constant.inline_bytes;
}

void make_empty(nstr& target) {
    target.data = nullptr;
    target.length = 0;
    target.owned = 0;
    target.memory = nullptr;
}

// Copies `length` bytes and as many blanks as asked for. What the target held before is overwritten, not released.
int32_t assign(bifun_environment* environment, bifun_memory_object* memory, nstr& target, const uint8_t* data, uint32_t length,
               uint32_t blanks) {
    make_empty(target);
    const uint64_t full_length = uint64_t{length} + blanks;
    uint8_t* bytes = target.reserved;
    if (full_length > NSTR_RESERVED_LENGTH) {
        if (full_length > UINT32_MAX) {
            return BIFUN_OUT_OF_MEMORY;
        }
        bytes = static_cast<uint8_t*>(
            memory->allocate(environment, memory->heap, static_cast<uint32_t>(full_length), "embedded/strings/strings", __LINE__));
        if (bytes == nullptr) {
            return BIFUN_OUT_OF_MEMORY;
        }
        target.owned = 1;
        target.memory = memory;
    }
    if (length > 0) {
        std::memcpy(bytes, data, length);
    }
    std::memset(bytes + length, blank, blanks);
    target.data = bytes;
    target.length = static_cast<uint32_t>(full_length);
    return BIFUN_OK;
}

} // namespace

int32_t nstr_assign(bifun_environment* environment, bifun_memory_object* memory, nstr* target, const bifun_string* source) {
    nstr_clear(environment, target);
    return assign(environment, memory, *target, source->data, source->length, 0);
}

int32_t nstr_assign_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                        const bifun_string* source) {
    return assign(environment, memory, *target, source->data, source->length, source->trailing_blanks);
}

int32_t nstr_assign_const_with_blank_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                              const bifun_string_constant* source) {
    return assign(environment, memory, *target, bytes_of(*source), source->length, source->trailing_blanks);
}

int32_t nstr_assign_const_ex_no_clear(bifun_environment* environment, bifun_memory_object* memory, nstr* target,
                                      const bifun_string_constant* source) {
    return assign(environment, memory, *target, bytes_of(*source), source->length, 0);
}

void nstr_set_str_value(bifun_environment* environment, nstr* target, uint8_t* data, uint32_t length) {
    nstr_clear(environment, target);
    target->data = data;
    target->length = length;
}

void bdta3_colstr_to_nstr_fast(nstr* target, const bifun_string* source) {
    make_empty(*target);
    target->data = source->data;
    target->length = source->length;
}

void nstr_clear(bifun_environment* environment, nstr* target) {
    if (target->owned != 0 && target->memory->release != nullptr) {
        target->memory->release(environment, target->memory->heap, target->data);
    }
    make_empty(*target);
}

void nstr_non_reserved_clear(bifun_environment* environment, nstr* target) {
    if (target->data != target->reserved) {
        nstr_clear(environment, target);
    }
}
