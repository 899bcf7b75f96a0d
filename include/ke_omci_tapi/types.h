/* Types and conventions shared by every ke_omci_tapi header.
 *
 * Every exported function returns a status word: 0 success, 1 a back-end
 * call failed (traced when the log gate is open), other values as each
 * function documents (a remote status passed through unchanged, or a
 * 0x7000xxxx argument or state error). */
#ifndef KE_OMCI_TAPI_TYPES_H
#define KE_OMCI_TAPI_TYPES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
#define KE_EXTERN_C_BEGIN extern "C" {
#define KE_EXTERN_C_END }
#define KE_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define KE_EXTERN_C_BEGIN
#define KE_EXTERN_C_END
#if defined(__STDC_VERSION__) && __STDC_VERSION__ >= 201112L
#define KE_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#else
/* C99: a negative array size stops the build; repeated declarations of
 * the same char[1] are compatible. */
#define KE_STATIC_ASSERT(cond, msg) extern char ke_static_assert_failed[(cond) ? 1 : -1]
#endif
#endif

/* Marks the library's exported names; everything else is hidden. */
#define KE_API __attribute__((visibility("default")))

/* The parameter list of an entry that takes the OMCI stack's arguments and
 * ignores them: C++ and C23 callers may pass any arguments or none; older C
 * has no such list without a named parameter, and calls with none. */
#if defined(__cplusplus) || (defined(__STDC_VERSION__) && __STDC_VERSION__ >= 202311L)
#define KE_ANY_ARGS ...
#else
#define KE_ANY_ARGS void
#endif

/* Pins a record's size, and a field's offset, on every target. */
#define KE_ASSERT_SIZE(type, bytes) \
    KE_STATIC_ASSERT(sizeof(type) == (bytes), #type " is " #bytes " bytes")
#define KE_ASSERT_OFFSET(type, field, off) \
    KE_STATIC_ASSERT(offsetof(type, field) == (off), #type "." #field " at " #off)

/* Gives a field at least n-byte alignment on every target: 64-bit counters
 * sit on 8-byte boundaries in the service's records, also where the ABI
 * would align them to 4 only. */
#define KE_ALIGNED(n) __attribute__((aligned(n)))
#define KE_ASSERT_ALIGN(type, n) \
    KE_STATIC_ASSERT(__alignof__(type) == (n), #type " aligned to " #n)

#define KE_OK 0u          /* success */
#define KE_CALL_FAILED 1u /* a back-end call failed */

#endif
