#include "trace.h"

#include <cstdio>

#include "platform.h"

namespace ke {

bool log_gate_open() { return ke_log_print_on(kLogModule, kLogLevel) != 0; }

void trace_failed_call(Site site, uint32_t ret)
{
    if (log_gate_open())
        std::printf("[%s(%d)][INFO]:ui_ret =0x%x, ui_line =%d\n", site.func, site.line,
                    static_cast<unsigned>(ret), site.line);
}

void trace_copy_failed(Site site, const char *op, int err)
{
    std::printf("%s, %d:%s return[%d] failed \r\n", site.func, site.line, op, err);
}

}  // namespace ke
