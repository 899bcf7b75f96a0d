// The steps every VoIP and TR-069 table writer and reader shares: a record
// zeroed with memset_s, one Set or Get, and a failure reported as the INFO
// line under the caller's log name.
#ifndef KE_VOIP_RECORD_H
#define KE_VOIP_RECORD_H

#include "voip_tables.h"

namespace ke::voip {

// Zeroes rec with memset_s; a failure prints the copy line and goes on.
template <uint32_t Table>
inline void blank(Site site, Record<Table> &rec)
{
    fill_zero(site, rec.data(), rec.size());
}

// Writes rec: 0, or 1 with the INFO line under site.
template <uint32_t Table>
inline uint32_t store(Site site, Record<Table> &rec)
{
    return cm::report_info(site, cm::set(rec));
}

// Reads rec (keyed, or not for a global table): 0, or 1 with the INFO
// line under site, and rec then not to be used.
template <uint32_t Table>
inline uint32_t load(Site site, Record<Table> &rec)
{
    return cm::report_info(site, cm::get(rec));
}

// Reads the record of line's low byte from the per-line table of layout L.
template <class L>
inline uint32_t load_line(Site site, typename L::Rec &rec, uint32_t line)
{
    put(rec, L::kLineId, line);
    return load(site, rec);
}

}  // namespace ke::voip

#endif
