// The device profile: what the simulated ONU says about itself.  Every key
// lands at a fixed place of the system-information reply, the board
// information reply or the simulator's own settings; the embedded default
// needs no file, and a profile file changes any key ("key = value" lines,
// # comments).
#ifndef KE_SML_SIM_PROFILE_H
#define KE_SML_SIM_PROFILE_H

#include <array>
#include <cstdint>
#include <string>

#include "record.h"

namespace smlsim {

inline constexpr uint32_t kSysinfoLen = 720;
inline constexpr uint32_t kBoardInfoLen = 956;
inline constexpr uint32_t kSettingsLen = 20;
// The optical module: its information block, then its five status words.
inline constexpr uint32_t kOpticalInfoLen = 56;
inline constexpr uint32_t kOpticalStaLen = 20;

struct Profile {
    std::array<uint8_t, kSysinfoLen> sysinfo{};  // "ke_ke_sysinfo_data_get_call" reply
    std::array<uint8_t, kBoardInfoLen> board{};  // "ke_ke_board_info_get_call" reply
    std::array<uint8_t, kSettingsLen> settings{};
    std::array<uint8_t, kOpticalInfoLen + kOpticalStaLen> optical{};

    // The simulator's own limits and identity.
    uint32_t tcont_capacity() const;
    uint32_t gemport_capacity() const;
    uint32_t onu_id() const;
    uint32_t boot_flag() const;   // the flash's flag until the device writes one
    uint32_t port_type() const;   // every Ethernet port's type
    uint32_t user_ports() const;  // from the board information
};

// The embedded default profile.
Profile default_profile();

// Applies the "key = value" lines of text to profile; false with the
// reason (and line number) in why.
bool apply_profile(const std::string &text, Profile *profile, std::string *why);

// The profile as a file a person can edit and load again.
std::string profile_text(const Profile &profile);

}  // namespace smlsim

#endif
