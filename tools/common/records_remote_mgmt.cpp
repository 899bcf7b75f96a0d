// Remote management: the TR-069 management server.
#include "ke_omci_tapi/remote_mgmt.h"
#include "records.h"

namespace ketool {
namespace {

constexpr std::array kTr069Server = {
    KE_FIELD(st_tr069_server, auc_acs_url, Kind::Text),
    KE_FIELD(st_tr069_server, auc_acs_user_name, Kind::Text),
    KE_FIELD(st_tr069_server, auc_acs_password, Kind::Text),
};

constexpr Layout kTr069ServerLayout = KE_LAYOUT(st_tr069_server, kTr069Server);

constexpr std::array kLayouts = {&kTr069ServerLayout};

}  // namespace

const LayoutList kRemoteMgmtRecords = rows_of(kLayouts);

}  // namespace ketool
