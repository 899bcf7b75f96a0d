// The cached system information record, exported for direct readers.
#include "ke_omci_tapi/device.h"

extern "C" {
st_sysinfo gst_sysinfo;
}
