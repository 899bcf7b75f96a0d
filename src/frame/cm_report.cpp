#include "cm_report.h"

#include "cm_table.h"

namespace ke::cm {

uint32_t report_error_word(uint32_t ret, const char *op, uint32_t table)
{
    if (ret == 0)
        return 0;
    // Room for an operation word, any table name of the index and "error".
    char line[64];
    std::snprintf(line, sizeof line, "%s %s error", op, table_info(table).name);
    std::puts(line);
    return kRefused;
}

}  // namespace ke::cm
