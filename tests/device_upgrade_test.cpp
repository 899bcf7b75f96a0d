// Firmware upgrade: the section rule, the saved word, the shard request
// and its bound, the section line of stop.
#include <string>
#include <vector>

#include "ke_omci_tapi/device.h"
#include "stub_test.h"

namespace {

using Names = std::vector<std::string>;
using ketest::call_names;
using ketest::printed;
using ketest::u32_at;
using ketest::words;

constexpr const char *kFlagGet = "ke_ke_upgrade_flag_get_call";
constexpr const char *kFlagSet = "ke_ke_upgrade_flag_set_call";
constexpr const char *kStart = "ke_ke_upgrade_sharding_start_call";
constexpr const char *kWrite = "ke_ke_upgrade_image_sharding_write_call";
const uint8_t kInfo[24] = {1, 2, 3, 4, 5, 6, 7, 8, 0x91, 0x92, 0x93, 0x94, 13, 14, 15, 16,
                           17, 18, 19, 20, 21, 22, 23, 24};

class Upgrade : public ketest::StubTest {
protected:
    void SetUp() override
    {
        StubTest::SetUp();
        kestub::ipc_serve_default([](void *, uint32_t) { return 0u; });
    }
};

uint32_t start(uint32_t flag, uint32_t word)
{
    kestub::ipc_script_reply(kFlagGet, flag);
    return ke_omci_tapi_upgrade_start(word, kInfo);
}

// The word the next shard carries.
uint32_t word_of_next_shard()
{
    EXPECT_EQ(ke_omci_tapi_upgrade_write(kInfo, 1), 0u);
    return u32_at(kestub::ipc_calls().back().request, 0);
}

TEST_F(Upgrade, StartAndStopPickTheSectionThatIsNotBooted)
{
    struct {
        uint32_t flag, other;
    } cases[] = {{1, 0}, {0, 1}, {2, 1}, {0xFFFFFFFF, 1}};
    for (const auto &c : cases) {
        kestub::ipc_serve_default([](void *, uint32_t) { return 0u; });
        EXPECT_EQ(start(c.flag, 0xCAFE), 0u);
        std::vector<uint8_t> req = words({c.other, 0xCAFE, 0x94939291});
        req.insert(req.end(), kInfo, kInfo + 24);
        EXPECT_EQ(call_names(), (Names{kFlagGet, kStart}));
        EXPECT_EQ(kestub::ipc_calls()[1].request, req) << "flag " << c.flag;

        kestub::reset();
        kestub::ipc_script_reply(kFlagGet, c.flag);
        kestub::ipc_script(kFlagSet, 0);  // the reply is the request itself
        std::string line = printed([] { EXPECT_EQ(ke_omci_tapi_upgrade_stop(), 0u); });
        EXPECT_EQ(line, "\r\n" + std::to_string(c.other) + " section will loading!!\r\n\n");
        EXPECT_EQ(call_names(), (Names{kFlagGet, kFlagSet}));
        EXPECT_EQ(kestub::ipc_calls()[1].request, words({c.other})) << "flag " << c.flag;
        kestub::reset();
    }
    // The line shows the flag buffer as the service left it.
    kestub::ipc_script_reply(kFlagGet, uint32_t{1});
    kestub::ipc_script_reply(kFlagSet, uint32_t{7});
    EXPECT_EQ(printed([] { ke_omci_tapi_upgrade_stop(); }), "\r\n7 section will loading!!\r\n\n");
}

TEST_F(Upgrade, ShardGoesOutWholeWithTheLatestStartsWord)
{
    ASSERT_EQ(start(0, 111), 0u);
    ASSERT_EQ(start(0, 0x1234ABCD), 0u);
    std::vector<uint8_t> image(6145);
    for (size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<uint8_t>(i + 1);
    EXPECT_EQ(ke_omci_tapi_upgrade_write(image.data(), 100), 0u);
    std::vector<uint8_t> req = words({0x1234ABCD, 100});
    req.insert(req.end(), image.begin(), image.begin() + 100);
    req.resize(6152, 0);
    EXPECT_EQ(kestub::ipc_calls().back().name, kWrite);
    EXPECT_EQ(kestub::ipc_calls().back().request, req);

    EXPECT_EQ(ke_omci_tapi_upgrade_write(image.data(), 6144), 0u);
    EXPECT_EQ(kestub::ipc_calls().back().request[6151], image[6143]);
    // Past the bound (bounds_test), a length that is negative as an int.
    const size_t calls = kestub::ipc_calls().size();
    EXPECT_EQ(ke_omci_tapi_upgrade_write(image.data(), 0xFFFFFFFF), 0x70000000u);
    EXPECT_EQ(kestub::ipc_calls().size(), calls);

    // A failed start call still saves the word.
    kestub::ipc_script(kStart, 9);
    EXPECT_EQ(start(1, 333), 1u);
    EXPECT_EQ(word_of_next_shard(), 333u);
}

}  // namespace
