// The simulator in a process of its own, reached by the library over the
// run directory's sockets: a download of a few MiB lands byte for byte in
// the flash's section file, and the state holds from call to call.
#include <algorithm>

#include "ke_omci_tapi/device.h"
#include "ke_omci_tapi/pon.h"
#include "sim_run.h"

namespace {

using ketest::Process;

class SimProcessTest : public ketest::SimRunTest {
protected:
    void SetUp() override
    {
        SimRunTest::SetUp();
        if (!IsSkipped())
            start_sim(sim);
    }
    // The simulator's log once it has stopped.
    std::string stopped_log()
    {
        sim.signal(SIGTERM);
        EXPECT_EQ(sim.wait(5000), 0);
        return ketest::read_file(run / "sim.log");
    }

    Process sim;
};

TEST_F(SimProcessTest, DownloadLandsInTheSectionFileByteForByte)
{
    // 3 MiB and a ragged tail, from a generator with no short period.
    std::string image(3 * 1024 * 1024 + 1234, '\0');
    uint32_t x = 0x12345678;
    for (char &c : image) {
        x ^= x << 13;
        x ^= x >> 17;
        x ^= x << 5;
        c = static_cast<char>(x);
    }
    const uint8_t info[KE_UPGRADE_INFO_LEN] = {0};
    ASSERT_EQ(ke_omci_tapi_upgrade_start(0x42, info), 0u);
    size_t shards = 0;
    for (size_t at = 0; at < image.size(); at += UPGRADE_SHARD_MAX, ++shards) {
        uint32_t len = static_cast<uint32_t>(std::min<size_t>(UPGRADE_SHARD_MAX, image.size() - at));
        ASSERT_EQ(ke_omci_tapi_upgrade_write(image.data() + at, len), 0u) << at;
    }
    std::string out = ketest::printed([] { EXPECT_EQ(ke_omci_tapi_upgrade_stop(), 0u); });
    EXPECT_EQ(out, "\r\n1 section will loading!!\r\n\n");

    EXPECT_EQ(ketest::read_file(run / "flash/section1.bin"), image);
    EXPECT_FALSE(ketest::exists(run / "flash/section0.bin"));
    EXPECT_EQ(ketest::read_file(run / "flash/boot_flag"), "1\n");
    std::string log = stopped_log();
    EXPECT_EQ(ketest::count_of(
                  log, "ke_ke_upgrade_image_sharding_write_call len=6152 status=0x0 word=0x42 "),
              shards);
    EXPECT_EQ(ketest::count_of(log, "status=0x0"), shards + 4);  // flag, start, shards, flag, flag
}

TEST_F(SimProcessTest, StateHoldsFromCallToCall)
{
    const uint8_t attr[KE_GEMPORT_ATTR_LEN] = {0x11};
    st_gem_map_param map = {1, 100, 0, 0, 0x200, 2};
    st_gem_map_param got = {1, 100, 0, 0, 0, 0};
    ASSERT_EQ(ke_omci_tapi_gemport_set(0x200, attr), 0u);
    ASSERT_EQ(ke_omci_tapi_map_set(&map), 0u);
    ASSERT_EQ(ke_omci_tapi_map_get(&got), 0u);
    EXPECT_EQ(got.ui_gemport, 0x200u);
    EXPECT_EQ(got.ui_tcont, 2u);
    EXPECT_EQ(ke_omci_tapi_gemport_del(0x200), 0x72400003u);  // still mapped
    EXPECT_EQ(ke_omci_tapi_pon_stop(), 0u);                     // the call without a record
    std::string log = stopped_log();
    EXPECT_NE(log.find("ke_ke_sml_gpon_map_get_call len=28 status=0x0 mask=1 vlan=0x64 pri=0 "
                       "port=0 rsv=0xffffffff gemport=0x200 tcont=2\n"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("ke_ke_sml_gpon_pon_stop_call len=0 status=0x0 (no record)\n"),
              std::string::npos);
}

}  // namespace
