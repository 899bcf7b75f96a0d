// Served calls of other processes, by remote name or short form.
#include <cstring>

#include "kestub.h"
#include "platform.h"
#include "record.h"
#include "shell.h"
#include "text.h"

namespace omcishell {
namespace {

constexpr std::array<ketool::Field, 1> kPortFields = {{{"port", 0, 4, ketool::Kind::U32}}};
constexpr ketool::Layout kPort = ketool::make_layout("port", 4, kPortFields);

struct ServedCall {
    const char *alias;
    const char *remote;
    const ketool::Layout *(*layout)();
    const char *positional;  // the field a bare value fills
};

constexpr std::array<ServedCall, 3> kServedCalls = {{
    {"set_loid", "ke_ke_omci_set_loid_call", [] { return ketool::find_record("st_sn_loid"); },
     "auc_loid"},
    {"set_loidpwd", "ke_ke_omci_set_loidpwd_call",
     [] { return ketool::find_record("st_sn_loid"); }, "auc_loid_pwd"},
    {"mc_param_get", "ke_ke_omci_mc_param_get_call", []() -> const ketool::Layout * { return &kPort; },
     "port"},
}};

const ServedCall *find_served(const std::string &name)
{
    for (const ServedCall &c : kServedCalls)
        if (name == c.alias || name == c.remote)
            return &c;
    return nullptr;
}

}  // namespace

bool remote_call(FILE *out, const std::vector<std::string> &words, uint32_t *status,
                 std::string *why)
{
    if (words.empty()) {
        *why = "which call?";
        return false;
    }
    const ServedCall *known = find_served(words[0]);
    const ketool::Layout *layout = known != nullptr ? known->layout() : nullptr;
    std::string remote = known != nullptr ? known->remote : words[0];
    std::vector<uint8_t> request;
    if (layout != nullptr) {
        request.assign(layout->size, 0);
        for (size_t i = 1; i < words.size(); ++i) {
            std::string one = words[i];
            if (one.find('=') == std::string::npos)
                one = std::string(known->positional) + "=" + one;
            if (!ketool::assign(*layout, request.data(), one, why))
                return false;
        }
    } else if (words.size() > 2 || (words.size() == 2 && !ketool::parse_hex(words[1], &request))) {
        *why = remote + ": the request of an unknown call is one word of hex bytes";
        return false;
    }
    uint32_t len = static_cast<uint32_t>(request.size());
    kestub::serve_lock();
    *status = ke_ipc_call(remote.c_str(), request.empty() ? nullptr : request.data(), len);
    kestub::serve_unlock();
    std::fprintf(out, "%s: status 0x%x\n", remote.c_str(), static_cast<unsigned>(*status));
    if (*status == 0 && layout != nullptr)
        for (const std::string &line : ketool::decode(*layout, request.data(), request.size()))
            std::fprintf(out, "  %s\n", line.c_str());
    else if (*status == 0 && !request.empty())
        std::fprintf(out, "  reply = %s\n", ketool::hex(request.data(), request.size()).c_str());
    return true;
}

}  // namespace omcishell
