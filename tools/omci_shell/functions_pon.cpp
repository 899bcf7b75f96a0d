// T-CONTs and GEM ports.
#include "functions.h"
#include "ke_omci_tapi/pon.h"

namespace omcishell {
namespace {

constexpr std::array<Function, 15> kRows = {{
    {"ke_omci_tapi_omcc_create", "", [](Args &) { return ke_omci_tapi_omcc_create(); }},
    {"ke_omci_tapi_omcc_destory", "", [](Args &) { return ke_omci_tapi_omcc_destory(); }},
    {"ke_omci_tapi_gponmode_get", "out u32 mode",
     [](Args &a) { return ke_omci_tapi_gponmode_get(a.word(0)); }},
    {"ke_omci_tapi_tcont_num_get", "inout u32 num",
     [](Args &a) { return ke_omci_tapi_tcont_num_get(a.word(0)); }},
    {"ke_omci_tapi_tcont_set", "in u32 tcont, in u32 allocid",
     [](Args &a) { return ke_omci_tapi_tcont_set(a.u32(0), a.u32(1)); }},
    {"ke_omci_tapi_tcont_get", "in u32 tcont, out u32 allocid",
     [](Args &a) { return ke_omci_tapi_tcont_get(a.u32(0), a.word(1)); }},
    {"ke_omci_tapi_tcont_del", "in u32 tcont",
     [](Args &a) { return ke_omci_tapi_tcont_del(a.u32(0)); }},
    {"ke_omci_tapi_dba_mode_get", "inout u32 mode",
     [](Args &a) { return ke_omci_tapi_dba_mode_get(a.word(0)); }},
    {"ke_omci_tapi_gem_block_set", "in u32 len",
     [](Args &a) { return ke_omci_tapi_gem_block_set(a.u32(0)); }},
    {"ke_omci_tapi_gem_block_get", "inout u32 len",
     [](Args &a) { return ke_omci_tapi_gem_block_get(a.word(0)); }},
    {"ke_omci_tapi_gemport_num_get", "inout u32 num",
     [](Args &a) { return ke_omci_tapi_gemport_num_get(a.word(0)); }},
    {"ke_omci_tapi_gemport_set", "in u32 gemport, in bytes[28] attr",
     [](Args &a) { return ke_omci_tapi_gemport_set(a.u32(0), a.bytes(1)); }},
    {"ke_omci_tapi_gemport_get", "in u32 gemport, out bytes[28] attr",
     [](Args &a) { return ke_omci_tapi_gemport_get(a.u32(0), a.bytes(1)); }},
    {"ke_omci_tapi_gemport_del", "in u32 gemport",
     [](Args &a) { return ke_omci_tapi_gemport_del(a.u32(0)); }},
    {"ke_omci_tapi_gemport_loopback_set", "in u32 word0, in u32 word1, in u32 word2",
     [](Args &a) { return ke_omci_tapi_gemport_loopback_set(a.u32(0), a.u32(1), a.u32(2)); }},
}};

}  // namespace

const FunctionList kPonFunctions = ketool::rows_of(kRows);

}  // namespace omcishell
