/* The whole exported interface of libke_omci_tapi. */
#ifndef KE_OMCI_TAPI_H
#define KE_OMCI_TAPI_H

#include "types.h"
#include "lifecycle.h"
#include "pon.h"
#include "bridge_qos.h"
#include "stat.h"
#include "mc.h"
#include "vlan.h"
#include "device.h"
#include "voip_wan.h"
#include "voip.h"
#include "remote_mgmt.h"

#endif
