// Tables of rows that families add to: each family keeps a constexpr
// std::array of rows, the program lists the families, and the rows are
// read as one table in family order.
#ifndef KE_TOOLS_ROWS_H
#define KE_TOOLS_ROWS_H

#include <array>
#include <cstddef>
#include <vector>

namespace ketool {

template <class Row>
struct Rows {
    const Row *rows;
    size_t count;
};

template <class Row, size_t N>
constexpr Rows<Row> rows_of(const std::array<Row, N> &rows)
{
    return Rows<Row>{rows.data(), N};
}

// Every row of every family, in order.
template <class Row, size_t F>
std::vector<const Row *> all_rows(const Rows<Row> *const (&families)[F])
{
    std::vector<const Row *> all;
    for (const Rows<Row> *family : families)
        for (size_t i = 0; i < family->count; ++i)
            all.push_back(&family->rows[i]);
    return all;
}

}  // namespace ketool

#endif
