// Table layouts.  Every table starts with its common head: the VLAN,
// multicast and port tables carry two zero words, the user port and, in
// their last four bytes, the field mask; the VoIP tables a word and the
// line byte, with the mask at the end; the WAN tables their three key
// bytes.  A family writes its tables' full layouts here as it lands.
#include "layouts.h"

#include <array>

#include "cm_table.h"

namespace cmdump {
namespace {

using ketool::Field;
using ketool::Kind;
using ketool::Layout;
using ke::cm::record_size;

template <uint32_t Id>
constexpr std::array<Field, 4> kPortHead = {{
    {"head0", 0, 4, Kind::U32},
    {"head1", 4, 4, Kind::U32},
    {"port", 8, 4, Kind::U32},
    {"mask", record_size(Id) - 4, 4, Kind::U32},
}};

// The VoIP tables, whose mask is unaligned in the odd sizes; mask_end is
// how far before the end the mask word ends (4 more bytes follow it in
// some tables).
template <uint32_t Id, uint32_t MaskEnd = 0>
constexpr std::array<Field, 3> kLineHead = {{
    {"head", 0, 4, Kind::U32},
    {"line", 4, 1, Kind::U8},
    {"mask", record_size(Id) - 4 - MaskEnd, 4, Kind::U32},
}};

template <uint32_t Id>
constexpr std::array<Field, 2> kWanHead = {{
    {"head", 0, 4, Kind::U32},
    {"key", 4, 3, Kind::Bytes},
}};

constexpr std::array<Field, 2> kPortOnly = {{
    {"head", 0, 4, Kind::U32},
    {"port", 4, 4, Kind::U32},
}};

template <uint32_t Id, class Fields>
constexpr Layout layout_of(const Fields &fields)
{
    return ketool::make_layout(ke::cm::table_info(Id).name, record_size(Id), fields);
}

template <uint32_t Id>
constexpr Layout kPort = layout_of<Id>(kPortHead<Id>);
template <uint32_t Id, uint32_t MaskEnd = 0>
constexpr Layout kLine = layout_of<Id>(kLineHead<Id, MaskEnd>);
template <uint32_t Id>
constexpr Layout kWan = layout_of<Id>(kWanHead<Id>);
template <uint32_t Id>
constexpr Layout kShort = layout_of<Id>(kPortOnly);

struct Row {
    uint32_t table;
    const Layout *layout;
};

constexpr std::array<Row, 37> kRows = {{
    {807, &kPort<807>},
    {808, &kPort<808>},
    {809, &kPort<809>},
    {810, &kPort<810>},
    {811, &kPort<811>},
    {813, &kPort<813>},
    {814, &kPort<814>},
    {815, &kShort<815>},
    {816, &kShort<816>},
    {817, &kPort<817>},
    {818, &kPort<818>},
    {819, &kPort<819>},
    {820, &kPort<820>},
    {821, &kPort<821>},
    {822, &kPort<822>},
    {824, &kPort<824>},
    {825, &kPort<825>},
    {826, &kPort<826>},
    {834, &kPort<834>},
    {448, &kWan<448>},
    {449, &kWan<449>},
    {458, &kWan<458>},
    {465, &kLine<465>},
    {467, &kLine<467>},
    {468, &kLine<468>},
    {470, &kLine<470, 4>},
    {471, &kLine<471>},
    {473, &kLine<473>},
    {474, &kLine<474>},
    {476, &kLine<476>},
    {477, &kLine<477>},
    {478, &kLine<478>},
    {524, &kLine<524, 4>},
    {668, &kLine<668>},
    {669, &kLine<669>},
    {671, &kLine<671>},
    {673, &kLine<673>},
}};

}  // namespace

const Layout *table_layout(uint32_t table)
{
    for (const Row &r : kRows)
        if (r.table == table)
            return r.layout;
    return nullptr;
}

}  // namespace cmdump
