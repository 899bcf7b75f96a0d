#include "aes_cmac.h"

namespace smlsim {
namespace {

constexpr uint8_t xtime(uint8_t b)
{
    return static_cast<uint8_t>((b << 1) ^ ((b & 0x80) != 0 ? 0x1b : 0));
}

constexpr uint8_t gmul(uint8_t a, uint8_t b)
{
    uint8_t p = 0;
    for (; b != 0; b >>= 1, a = xtime(a))
        if ((b & 1) != 0)
            p ^= a;
    return p;
}

constexpr uint8_t rotl8(uint8_t b, int n)
{
    return static_cast<uint8_t>((b << n) | (b >> (8 - n)));
}

// The S-box from its definition: the multiplicative inverse in GF(2^8)
// (x^254), then the affine map.
constexpr std::array<uint8_t, 256> make_sbox()
{
    std::array<uint8_t, 256> box{};
    for (int x = 0; x < 256; ++x) {
        uint8_t inv = 1;
        for (int i = 0; i < 254; ++i)
            inv = gmul(inv, static_cast<uint8_t>(x));
        if (x == 0)
            inv = 0;
        box[x] = static_cast<uint8_t>(inv ^ rotl8(inv, 1) ^ rotl8(inv, 2) ^ rotl8(inv, 3) ^
                                      rotl8(inv, 4) ^ 0x63);
    }
    return box;
}

constexpr std::array<uint8_t, 256> kSbox = make_sbox();
static_assert(kSbox[0x00] == 0x63 && kSbox[0x53] == 0xed, "S-box");

constexpr int kRounds = 10;
using RoundKeys = std::array<uint8_t, 16 * (kRounds + 1)>;

RoundKeys expand(const Block &key)
{
    RoundKeys rk{};
    for (int i = 0; i < 16; ++i)
        rk[i] = key[i];
    uint8_t rcon = 1;
    for (int i = 16; i < 16 * (kRounds + 1); i += 4) {
        uint8_t t[4] = {rk[i - 4], rk[i - 3], rk[i - 2], rk[i - 1]};
        if (i % 16 == 0) {
            uint8_t first = t[0];
            t[0] = static_cast<uint8_t>(kSbox[t[1]] ^ rcon);
            t[1] = kSbox[t[2]];
            t[2] = kSbox[t[3]];
            t[3] = kSbox[first];
            rcon = xtime(rcon);
        }
        for (int j = 0; j < 4; ++j)
            rk[i + j] = static_cast<uint8_t>(rk[i - 16 + j] ^ t[j]);
    }
    return rk;
}

// The state is column by column, as the block's bytes.
void sub_shift(Block &s)
{
    Block t;
    for (int c = 0; c < 4; ++c)
        for (int r = 0; r < 4; ++r)
            t[r + 4 * c] = kSbox[s[r + 4 * ((c + r) % 4)]];
    s = t;
}

void mix_columns(Block &s)
{
    for (int c = 0; c < 4; ++c) {
        uint8_t *a = &s[4 * c];
        uint8_t a0 = a[0], a1 = a[1], a2 = a[2], a3 = a[3];
        a[0] = static_cast<uint8_t>(gmul(a0, 2) ^ gmul(a1, 3) ^ a2 ^ a3);
        a[1] = static_cast<uint8_t>(a0 ^ gmul(a1, 2) ^ gmul(a2, 3) ^ a3);
        a[2] = static_cast<uint8_t>(a0 ^ a1 ^ gmul(a2, 2) ^ gmul(a3, 3));
        a[3] = static_cast<uint8_t>(gmul(a0, 3) ^ a1 ^ a2 ^ gmul(a3, 2));
    }
}

void add_key(Block &s, const RoundKeys &rk, int round)
{
    for (int i = 0; i < 16; ++i)
        s[i] ^= rk[16 * round + i];
}

// Doubling in GF(2^128), the subkey step.
Block dbl(const Block &b)
{
    Block out;
    for (int i = 0; i < 16; ++i)
        out[i] = static_cast<uint8_t>((b[i] << 1) | (i < 15 ? b[i + 1] >> 7 : 0));
    if ((b[0] & 0x80) != 0)
        out[15] ^= 0x87;
    return out;
}

}  // namespace

Block aes_encrypt(const Block &key, const Block &in)
{
    RoundKeys rk = expand(key);
    Block s = in;
    add_key(s, rk, 0);
    for (int round = 1; round < kRounds; ++round) {
        sub_shift(s);
        mix_columns(s);
        add_key(s, rk, round);
    }
    sub_shift(s);
    add_key(s, rk, kRounds);
    return s;
}

Block aes_cmac(const Block &key, const uint8_t *msg, size_t len)
{
    Block k1 = dbl(aes_encrypt(key, Block{}));
    Block k2 = dbl(k1);
    size_t blocks = len == 0 ? 1 : (len + 15) / 16;
    bool whole = len != 0 && len % 16 == 0;
    Block x{};
    for (size_t b = 0; b + 1 < blocks; ++b) {
        for (int i = 0; i < 16; ++i)
            x[i] ^= msg[16 * b + i];
        x = aes_encrypt(key, x);
    }
    // The last block: whole, with K1; or padded with 0x80 0 ..., with K2.
    size_t tail = len - 16 * (blocks - 1);
    Block last{};
    for (size_t i = 0; i < tail; ++i)
        last[i] = msg[16 * (blocks - 1) + i];
    if (!whole)
        last[tail] = 0x80;
    const Block &sub = whole ? k1 : k2;
    for (int i = 0; i < 16; ++i)
        x[i] ^= static_cast<uint8_t>(last[i] ^ sub[i]);
    return aes_encrypt(key, x);
}

}  // namespace smlsim
