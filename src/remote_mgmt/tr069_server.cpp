// The TR-069 management server: ACS address and credentials, stored for
// the device's TR-069 client as they are handed in.
#include "../voip/voip_record.h"
#include "ke_omci_tapi/remote_mgmt.h"

using namespace ke::voip;

extern "C" {

uint32_t ke_omci_tapi_tr069_server_set(const st_tr069_server *pst_server)
{
    if (pst_server == nullptr)
        return 1;
    Tr069Server::Rec rec(KE_SITE);
    write(KE_SITE, rec, Tr069Server::kAcsUrl, pst_server->auc_acs_url);
    write(KE_SITE, rec, Tr069Server::kAcsUserName, pst_server->auc_acs_user_name);
    write(KE_SITE, rec, Tr069Server::kAcsPassword, pst_server->auc_acs_password);
    return store(KE_SITE, rec);
}

uint32_t ke_omci_tapi_tr069_server_get(st_tr069_server *pst_server)
{
    if (pst_server == nullptr)
        return 1;
    Tr069Server::Rec rec(KE_SITE);
    if (load(KE_SITE, rec) != 0)
        return 1;
    get(KE_SITE, rec, Tr069Server::kAcsUrl, pst_server->auc_acs_url);
    get(KE_SITE, rec, Tr069Server::kAcsUserName, pst_server->auc_acs_user_name);
    get(KE_SITE, rec, Tr069Server::kAcsPassword, pst_server->auc_acs_password);
    return 0;
}

}  // extern "C"
