// The remote-call patterns.  Every exported function that talks to the
// sml service goes through one of these; a family only builds its record
// and reads its outputs.
//
// A record is both request and reply: the full record length always
// travels, and after a nonzero status its content is not used.
#ifndef KE_FRAME_CALL_H
#define KE_FRAME_CALL_H

#include <cstdint>

#include "copy.h"
#include "platform.h"
#include "trace.h"

namespace ke {

// The failure of a plain call: traced (gated), and 1.
uint32_t call_failed(Site site, uint32_t ret);

// Plain call: 0 on success; a nonzero status is traced (gated) and
// returned as 1.  Inline, so that a call that succeeds is the remote call
// and one test.
__attribute__((always_inline)) inline uint32_t call(Site site, const char *name, void *buf,
                                                   uint32_t len)
{
    uint32_t ret = ke_ipc_call(name, buf, len);
    return ret == 0 ? 0 : call_failed(site, ret);
}

template <class Record>
__attribute__((always_inline)) inline uint32_t call(Site site, const char *name, Record &rec)
{
    return call(site, name, &rec, sizeof rec);
}

// Pass-through call: the status of ke_ipc_call, unchanged and untraced.
inline uint32_t pass_through(const char *name, void *buf, uint32_t len)
{
    return ke_ipc_call(name, buf, len);
}

template <class Record>
inline uint32_t pass_through(const char *name, Record &rec)
{
    return pass_through(name, &rec, sizeof rec);
}

// Pass-through of a single input word in a 4-byte record of its own.
uint32_t pass_word(const char *name, uint32_t word);

// Read-modify-write: read the whole record, change one field, write it
// back in the same buffer.  No write follows a failed read; each failure
// traces its own site.
template <class Record, class Change>
inline uint32_t read_modify_write(Site read_site, const char *get_name, Site write_site,
                                  const char *set_name, Record &rec, Change change)
{
    if (call(read_site, get_name, rec) != 0)
        return 1;
    change(rec);
    return call(write_site, set_name, rec);
}

}  // namespace ke

#endif
