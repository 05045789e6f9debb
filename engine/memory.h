/* SPDX-License-Identifier: Apache-2.0 */
/* Scratch memory: heaps with marks and memory objects over heaps. */
#ifndef BIFUN_ENGINE_MEMORY_H
#define BIFUN_ENGINE_MEMORY_H

#include "bop/frame/contract.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A growable heap: what is taken from it is freed together. Memory is taken from it through a memory object whose `heap` it is. */
typedef struct mem_heap mem_heap;

/* A place in a heap; opaque. Marks nest: freeing to a mark invalidates the marks taken after it. */
typedef struct mem_heap_mark {
    size_t taken;
} mem_heap_mark;

/* Makes a heap whose first block holds `initial_size` bytes. `context` is passed through and may be null; `file` and `line` name the
 * caller; `kind` is always 1 and the two reserved arguments are 0. Returns null when memory is exhausted. */
mem_heap* mem_heap_create_low(bifun_environment* environment, int32_t reserved_1, int32_t reserved_2, uint32_t initial_size, void* context,
                              const char* file, uint32_t line, int32_t kind);

/* Destroys the heap and everything taken from it. */
void mem_heap_free(bifun_environment* environment, mem_heap* heap);

/* The heap's current top, for mem_heap_free_heap_top. */
mem_heap_mark mem_heap_get_heap_top(mem_heap* heap);

/* Frees everything that was taken from the heap after the mark. */
void mem_heap_free_heap_top(bifun_environment* environment, mem_heap* heap, mem_heap_mark mark);

/* Makes a memory object over a heap of its own whose first block holds `size` bytes. Its allocation function returns memory aligned
 * for any type, never null for size 0; its release function accepts null. Returns null when memory is exhausted. */
bifun_memory_object* rt_memobj_create_ex(bifun_environment* environment, int32_t reserved, uint32_t size, const char* file, uint32_t line);

/* Destroys the memory object, its heap and everything taken from it. Null does nothing. */
void rt_memobj_destroy(bifun_environment* environment, bifun_memory_object* memory);

#ifdef __cplusplus
}
#endif

#endif
