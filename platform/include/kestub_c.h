/* C interface to the platform stand-in's test API, for programs written
 * in C (the C++ interface, kestub.h, offers more). */
#ifndef KESTUB_C_H
#define KESTUB_C_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Back to the state of a fresh process. */
void kestub_reset(void);

/* The next call of name answers status; with status 0 the reply bytes (if
 * any) overwrite the caller's buffer. */
void kestub_ipc_script(const char *name, uint32_t status, const void *reply, size_t reply_len);

/* Number of remote calls made since the last reset. */
size_t kestub_ipc_call_count(void);

/* Call i: its name, and up to cap bytes of its request copied into buf.
 * Returns the call's length argument, or -1 when there is no call i. */
long kestub_ipc_call_at(size_t i, const char **name, void *buf, size_t cap);

/* Open (nonzero) or close the log gate. */
void kestub_log_set(int open);

#ifdef __cplusplus
}
#endif

#endif
