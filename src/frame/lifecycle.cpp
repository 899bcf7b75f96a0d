// Start and stop.  Every piece of the library's state is static with its
// value from load time, and the multicast state is set up on first use,
// so there is nothing to do here.
#include "ke_omci_tapi/lifecycle.h"

extern "C" {

uint32_t ke_omci_tapi_init(void) { return 0; }

void ke_omci_tapi_exit(void) {}

}  // extern "C"
