// AES-CMAC (AES-128), the integrity check the XG-PON line computes with
// its keys.  Small and slow: the simulator computes a few per provisioning.
#ifndef KE_SML_SIM_AES_CMAC_H
#define KE_SML_SIM_AES_CMAC_H

#include <array>
#include <cstddef>
#include <cstdint>

namespace smlsim {

using Block = std::array<uint8_t, 16>;

// The AES-128 encryption of one block under key.
Block aes_encrypt(const Block &key, const Block &in);

// The 128-bit CMAC of len bytes at msg under key.
Block aes_cmac(const Block &key, const uint8_t *msg, size_t len);

}  // namespace smlsim

#endif
