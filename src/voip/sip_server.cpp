// SIP signalling of a line, the three SIP servers and the user agent.
#include "code_map.h"
#include "ke_omci_tapi/voip.h"
#include "voip_record.h"

namespace ke::voip {
namespace {

// IP protocol number to the stored transport code; any other number (and
// the "keep" value) stores the UDP code.
constexpr CodeMap<4> kTransport{{{{6, 0}, {17, 1}, {56, 2}, {132, 3}}}, 1, 17};

// One server of table 470.  The address is always selected, the port only
// when it is not 0, the transport unless the request keeps it.
uint32_t server_set(Site site, const SipServer::Server &server, const st_voip_server *req)
{
    if (req == nullptr)
        return 1;
    SipServer::Rec rec(site);
    write(site, rec, server.address, req->auc_address);
    if (req->us_port != 0)
        write(rec, server.port, req->us_port);
    put(rec, server.transport, kTransport.to_stored(req->us_protocol));
    if (req->us_protocol != KE_VOIP_PROTOCOL_KEEP)
        select(rec, server.transport);
    return store(site, rec);
}

}  // namespace
}  // namespace ke::voip

using namespace ke::voip;

extern "C" {

uint32_t ke_omci_tapi_voip_udptcp_set(const st_voip_udptcp *pst_udptcp)
{
    if (pst_udptcp == nullptr)
        return 1;
    LineProfile::Rec rec(KE_SITE);
    put(rec, LineProfile::kLineId, pst_udptcp->us_line);
    write(rec, LineProfile::kSipLocalPort, pst_udptcp->us_port);
    write(rec, LineProfile::kSipTos, pst_udptcp->us_tos);
    return store(KE_SITE, rec);
}

uint32_t ke_omci_tapi_voip_proxyserver_set(const st_voip_server *pst_server)
{
    return server_set(KE_SITE, SipServer::kProxy, pst_server);
}

uint32_t ke_omci_tapi_voip_regserver_set(const st_voip_server *pst_server)
{
    return server_set(KE_SITE, SipServer::kRegistrar, pst_server);
}

uint32_t ke_omci_tapi_voip_outbserver_set(const st_voip_server *pst_server)
{
    return server_set(KE_SITE, SipServer::kOutbound, pst_server);
}

// The agent's one value is both its port and, read as a protocol number,
// its transport; all three fields are always selected.
uint32_t ke_omci_tapi_voip_agent_set(const st_voip_agent *pst_agent)
{
    if (pst_agent == nullptr)
        return 1;
    SipServer::Rec rec(KE_SITE);
    write(KE_SITE, rec, SipServer::kAgent.address, pst_agent->auc_address);
    write(rec, SipServer::kAgent.port, pst_agent->us_value);
    write(rec, SipServer::kAgent.transport, kTransport.to_stored(pst_agent->us_value));
    return store(KE_SITE, rec);
}

}  // extern "C"
