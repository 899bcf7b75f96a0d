// The steps every VoIP and TR-069 table writer and reader shares: a record
// zeroed with memset_s, one Set or Get, and a failure reported as the INFO
// line under the caller's log name.
#ifndef KE_VOIP_RECORD_H
#define KE_VOIP_RECORD_H

#include "voip_tables.h"

namespace ke::voip {

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

// Writes one field alone into a global table.
template <uint32_t Table, class T>
inline uint32_t store_field(Site site, Field<Table, T> field, uint32_t value)
{
    Record<Table> rec(site);
    write(rec, field, value);
    return store(site, rec);
}

// Writes one field of line alone into the per-line table of layout L.
template <class L, class T>
inline uint32_t store_line_field(Site site, uint32_t line, Field<L::kTable, T> field,
                                 uint32_t value)
{
    typename L::Rec rec(site);
    put(rec, L::kLineId, line);
    write(rec, field, value);
    return store(site, rec);
}

// Reads one field of a global table; *value is written only on success.
template <uint32_t Table, class T>
inline uint32_t load_field(Site site, Field<Table, T> field, T *value)
{
    Record<Table> rec(site);
    if (load(site, rec) != 0)
        return 1;
    *value = get(rec, field);
    return 0;
}

// Reads one field of line from the per-line table of layout L.
template <class L, class T>
inline uint32_t load_line_field(Site site, uint32_t line, Field<L::kTable, T> field, T *value)
{
    typename L::Rec rec(site);
    if (load_line<L>(site, rec, line) != 0)
        return 1;
    *value = get(rec, field);
    return 0;
}

}  // namespace ke::voip

#endif
