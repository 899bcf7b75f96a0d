// The LOID store: the last LOID and LOID password handed in by another
// process through the served calls.  Only auc_loid and auc_loid_pwd are
// ever written; every other field stays zero.
#ifndef KE_FRAME_LOID_STORE_H
#define KE_FRAME_LOID_STORE_H

#include "ke_omci_tapi/device.h"

namespace ke {

const st_sn_loid &loid_store();

}  // namespace ke

#endif
