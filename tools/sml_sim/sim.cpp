#include "sim.h"

#include <chrono>
#include <cstring>
#include <thread>
#include <utility>

#include "kestub.h"
#include "text.h"

namespace smlsim {
namespace {

// Every family's procedures; a family that lands adds its list here.
constexpr const ProcedureList *kFamilies[] = {
    &kPonProcedures,
    &kDeviceProcedures,
    &kMapProcedures,
    &kLineProcedures,
    &kKeyProcedures,
    &kBridgeProcedures,
    &kQosProcedures,
    &kCounterProcedures,
    &kPortProcedures,
    &kFlashProcedures,
};

// The serving convention: the exact length, and a buffer unless the
// procedure takes no record at all (length 0, where a null buffer is the
// call without a record).
bool refused(const Procedure &p, const void *buf, uint32_t len)
{
    return len != p.len || (buf == nullptr && p.len != 0);
}

// The transport calls plain functions, one per served name, so each row is
// bound to one slot of a fixed pool of functions that know their index.
constexpr size_t kSlots = 256;
Sim *g_sim = nullptr;
const Procedure *g_bound[kSlots];

template <size_t I>
uint32_t slot(void *buf, uint32_t len)
{
    return g_sim->serve(*g_bound[I], buf, len);
}

template <size_t... I>
constexpr std::array<kestub::IpcHandler, kSlots> make_slots(std::index_sequence<I...>)
{
    return {{slot<I>...}};
}

constexpr std::array<kestub::IpcHandler, kSlots> kSlotFns =
    make_slots(std::make_index_sequence<kSlots>{});

}  // namespace

uint32_t word_at(const uint8_t *buf, uint32_t off)
{
    uint32_t v;
    std::memcpy(&v, buf + off, 4);
    return v;
}

void put_word(uint8_t *buf, uint32_t off, uint32_t value) { std::memcpy(buf + off, &value, 4); }

std::vector<const Procedure *> all_procedures() { return ketool::all_rows(kFamilies); }

Sim::Sim(const Profile &profile)
{
    state_.profile = profile;
    state_.flash.dir = kestub::run_dir() + "/flash";
    state_.flash.boot_flag = profile.boot_flag();
}

uint32_t Sim::serve(const Procedure &p, void *buf, uint32_t len)
{
    if (!stall_.empty() && stall_ == p.name) {
        std::fprintf(stderr, "sml-sim: stalling in %s\n", p.name);
        for (;;)
            std::this_thread::sleep_for(std::chrono::hours(1));
    }
    auto *bytes = static_cast<uint8_t *>(buf);
    uint32_t status = refused(p, buf, len) ? kRefused : p.handle(state_, bytes);
    if (delay_ms_ != 0)
        std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms_));
    log(p, bytes, len, status);
    return status;
}

void Sim::log(const Procedure &p, const uint8_t *buf, uint32_t len, uint32_t status)
{
    if (log_ == nullptr)
        return;
    std::string what;
    if (refused(p, buf, len))
        what = "refused: length " + std::to_string(len) + (buf == nullptr ? " (null buffer)" : "") +
               ", expected " + std::to_string(p.len);
    else if (len == 0)
        what = "(no record)";
    else if (p.layout != nullptr)
        what = ketool::decode_line(*p.layout, buf, len);
    else
        what = ketool::hex(buf, len, 16);
    std::fprintf(log_, "%s len=%u status=0x%x %s\n", p.name, static_cast<unsigned>(len),
                 static_cast<unsigned>(status), what.c_str());
    std::fflush(log_);
}

size_t Sim::attach()
{
    g_sim = this;
    std::vector<const Procedure *> all = all_procedures();
    size_t n = 0;
    for (; n < all.size() && n < kSlots; ++n) {
        g_bound[n] = all[n];
        kestub::ipc_serve(all[n]->name, kSlotFns[n]);
    }
    return n;
}

}  // namespace smlsim
