/* The platform interfaces the library is bound to at load time.
 *
 * None of these is defined by the library: the device's IPC, log, OS,
 * configuration-manager and board-information libraries provide them (and
 * the stand-in in platform/ does so off the device).  The four bounded
 * copy functions carry their C11 Annex K names; they are declared here
 * rather than taken from any vendor header, so the library binds to
 * exactly these names. */
#ifndef KE_FRAME_PLATFORM_H
#define KE_FRAME_PLATFORM_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* IPC library: synchronous remote call by name; the reply overwrites buf. */
uint32_t ke_ipc_call(const char *name, void *buf, uint32_t len);

/* Log library: nonzero when lines of this module and level are printed. */
uint32_t ke_log_print_on(uint32_t module, uint32_t level);

/* OS-abstraction library. */
int ke_os_printf(const char *fmt, ...) __attribute__((format(printf, 1, 2)));
void *ke_os_malloc(uint32_t size);
void ke_os_free(void *ptr);
char *ke_os_strtok(char *str, const char *delim);
int ke_os_memcmp(const void *a, const void *b, uint32_t len);
int ke_os_strcasecmp(const char *a, const char *b);
int ke_os_atoi(const char *text, uint32_t *value);

/* Configuration manager: every call returns 0 on success. */
uint32_t igdCmConfGet(uint32_t table, void *record, uint32_t size);
uint32_t igdCmConfSet(uint32_t table, void *record, uint32_t size);
uint32_t igdCmConfAdd(uint32_t table, void *record, uint32_t size);
uint32_t igdCmConfDel(uint32_t table, void *record, uint32_t size);
uint32_t igdCmConfGetEntryNum(uint32_t table, uint32_t *count);
uint32_t igdCmConfGetAllEntry(uint32_t table, void *buf, uint32_t size, uint32_t count);
uint32_t igdCmOamCtrl(uint32_t code);

/* Board-information library: the value of key as text in buf. */
int bdinfo_get_value(const char *key, char *buf, uint32_t size);

/* Bounded memory and string functions (C11 Annex K). */
typedef size_t ke_rsize_t;
int memcpy_s(void *dest, ke_rsize_t destsz, const void *src, ke_rsize_t count);
int memset_s(void *dest, ke_rsize_t destsz, int ch, ke_rsize_t count);
int strcpy_s(char *dest, ke_rsize_t destsz, const char *src);
int sprintf_s(char *dest, ke_rsize_t destsz, const char *fmt, ...)
    __attribute__((format(printf, 3, 4)));

#ifdef __cplusplus
}
#endif

#endif
