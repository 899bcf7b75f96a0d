// SFU and HGU port mode: the mode read of table 834, the mode write, the
// flush and trunk entries of tables 815 and 816, and their error words.
#include <functional>
#include <string>

#include "../src/vlan/port_mode.h"
#include "ke_omci_tapi/vlan.h"
#include "stub_test.h"

namespace {

using kestub::CmOp;
using ketest::cm_record;
using ketest::matches_at_line;
using ketest::printed;

class PortMode : public ketest::StubTest {};

void store_mode(uint32_t port, uint32_t mode)
{
    std::vector<uint8_t> rec = cm_record(52, {{8, port}, {44, mode}, {48, 16}});
    kestub::cm_preload(834, rec.data(), rec.size());
}

TEST_F(PortMode, OnlyAStoredModeOfOneIsSfu)
{
    struct Case {
        uint32_t mode;
        uint32_t sfu;
    } const cases[] = {{1, 1}, {0, 0}, {2, 0}, {0x101, 0}, {0xFFFFFFFF, 0}};
    for (const Case &c : cases) {
        kestub::reset();
        store_mode(4, 1 - (c.mode & 1));  // another port, the other way
        store_mode(2, c.mode);
        uint32_t ret = 9;
        std::string out = printed([&] { ret = ke_omci_tapi_check_port_mode_is_sfu(2); });
        EXPECT_EQ(ret, c.sfu) << "mode " << c.mode;
        EXPECT_EQ(ke::vlan::port_is_sfu(2), c.sfu == 1) << "mode " << c.mode;
        EXPECT_EQ(out, "");

        // The read names the port and the mode's mask, at full size.
        const kestub::CmCall &get = kestub::cm_calls()[0];
        EXPECT_EQ(get.op, CmOp::Get);
        EXPECT_EQ(get.table, 834u);
        EXPECT_EQ(get.size, 52u);
        EXPECT_EQ(get.record, cm_record(52, {{8, 2}, {48, 16}}));
    }
}

TEST_F(PortMode, FailedReadIsPrintedAlwaysAndReadsAsHgu)
{
    kestub::log_set(false);
    store_mode(3, 1);
    kestub::cm_fail(834, 0xFFFFFFFF);
    uint32_t ret = 9;
    std::string out = printed([&] { ret = ke_omci_tapi_check_port_mode_is_sfu(3); });
    EXPECT_EQ(ret, 0u);
    EXPECT_TRUE(
        matches_at_line(out, "ke_omci_tapi_check_port_mode_is_sfu[%d] fail, port_id=3, ret=-1\n"))
        << out;
    EXPECT_EQ(kestub::log_queries(), 0u);

    // A port the table does not know, through the internal reader too.
    bool sfu = true;
    out = printed([&] { sfu = ke::vlan::port_is_sfu(7); });
    EXPECT_FALSE(sfu);
    EXPECT_TRUE(matches_at_line(out, "ke_omci_tapi_check_port_mode_is_sfu[%d] fail, port_id=7, "
                                     "ret=" +
                                         std::to_string(static_cast<int>(kestub::kCmNoEntry)) +
                                         "\n"))
        << out;
}

TEST_F(PortMode, ModeUpdateReadsOnlyItsTwoFieldsOfTheCallersBlock)
{
    // A heap block of exactly ten bytes: a read past byte 9 is a sanitizer
    // report, and a read of any other byte shows up as 0xAA in the record.
    std::vector<uint8_t> ten(10, 0xAA);
    const uint32_t mode = 1;
    std::memcpy(&ten[4], &mode, 4);
    ten[9] = 0x07;

    uint32_t ret = ke_omci_update_the_cm_table(reinterpret_cast<const st_port_mode_update *>(
        ten.data()));
    EXPECT_EQ(ret, 0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u);
    const kestub::CmCall &set = kestub::cm_calls()[0];
    EXPECT_EQ(set.op, CmOp::Set);
    EXPECT_EQ(set.table, 834u);
    EXPECT_EQ(set.size, 52u);
    EXPECT_EQ(set.record, cm_record(52, {{8, 7}, {44, 1}, {48, 16}}));
}

TEST_F(PortMode, ModeUpdateTakesTheBlockUnaligned)
{
    alignas(4) uint8_t storage[12] = {};
    uint8_t *block = storage + 1;
    const uint32_t mode = 2;
    std::memcpy(block + 4, &mode, 4);
    block[9] = 0xFF;  // the largest port it can name
    EXPECT_EQ(ke_omci_update_the_cm_table(reinterpret_cast<const st_port_mode_update *>(block)),
              0u);
    ASSERT_EQ(kestub::cm_calls().size(), 1u);
    EXPECT_EQ(kestub::cm_calls()[0].record, cm_record(52, {{8, 255}, {44, 2}, {48, 16}}));
}

TEST_F(PortMode, ModeWrittenIsModeRead)
{
    st_port_mode_update update = {};
    update.uc_port = 5;
    update.ui_sfu_mode = 1;
    EXPECT_EQ(ke_omci_update_the_cm_table(&update), 0u);
    EXPECT_EQ(ke_omci_tapi_check_port_mode_is_sfu(5), 1u);
    update.ui_sfu_mode = 0;
    EXPECT_EQ(ke_omci_update_the_cm_table(&update), 0u);
    EXPECT_EQ(ke_omci_tapi_check_port_mode_is_sfu(5), 0u);
    EXPECT_EQ(kestub::cm_entries(834).size(), 1u);
}

struct WriterRow {
    const char *name;
    std::function<uint32_t()> call;
    uint32_t table;
    CmOp op;
    std::vector<uint8_t> record;
    const char *error_line;
};

std::vector<WriterRow> writer_rows()
{
    return {
        {"update", [] {
             st_port_mode_update u = {};
             u.uc_port = 6;
             u.ui_sfu_mode = 1;
             return ke_omci_update_the_cm_table(&u);
         },
         834, CmOp::Set, cm_record(52, {{8, 6}, {44, 1}, {48, 16}}),
         "set IGD_CO_PORT_INFO_TAB error\n"},
        {"init_to_sfu", [] { return ke_omci_init_the_port_to_sfu(6); }, 815, CmOp::Add,
         ketest::words({0, 6}), "Add IGD_CO_VLAN_FLUSH_ALL_TAB error\n"},
        {"restore_to_hgu", [] { return ke_omci_restore_the_port_to_hgu(6); }, 815, CmOp::Del,
         ketest::words({0, 6}), "Del IGD_CO_VLAN_FLUSH_ALL_TAB error\n"},
        {"notify_trunk", [] { return ke_omci_notify_sfu_trunk(6, 9); }, 816, CmOp::Set,
         ketest::words({0, 6, 9}), "Set IGD_CO_VLAN_TRUNK_TAB error\n"},
    };
}

TEST_F(PortMode, WritersSendOneRecordAndSucceed)
{
    for (const WriterRow &row : writer_rows()) {
        kestub::reset();
        if (row.op == CmOp::Del)
            kestub::cm_preload(row.table, row.record.data(), row.record.size());
        uint32_t ret = 9;
        std::string out = printed([&] { ret = row.call(); });
        EXPECT_EQ(ret, 0u) << row.name;
        EXPECT_EQ(out, "") << row.name;
        ASSERT_EQ(kestub::cm_calls().size(), 1u) << row.name;
        const kestub::CmCall &c = kestub::cm_calls()[0];
        EXPECT_EQ(c.op, row.op) << row.name;
        EXPECT_EQ(c.table, row.table) << row.name;
        EXPECT_EQ(c.size, row.record.size()) << row.name;
        EXPECT_EQ(c.record, row.record) << row.name;
    }
}

TEST_F(PortMode, FailedWriteIsAnErrorWordWhateverTheGate)
{
    for (const WriterRow &row : writer_rows()) {
        for (bool open : {true, false}) {
            kestub::reset();
            kestub::log_set(open);
            kestub::cm_fail(row.table, 3);
            uint32_t ret = 9;
            std::string out = printed([&] { ret = row.call(); });
            EXPECT_EQ(ret, 0x70000000u) << row.name;
            EXPECT_EQ(out, row.error_line) << row.name;
            EXPECT_EQ(kestub::log_queries(), 0u) << row.name;
        }
    }
}

TEST_F(PortMode, FlushEntryComesAndGoesWithTheMode)
{
    EXPECT_EQ(ke_omci_init_the_port_to_sfu(2), 0u);
    EXPECT_EQ(ke_omci_init_the_port_to_sfu(3), 0u);
    EXPECT_EQ(ke_omci_restore_the_port_to_hgu(2), 0u);
    auto left = kestub::cm_entries(815);
    ASSERT_EQ(left.size(), 1u);
    EXPECT_EQ(left[0], ketest::words({0, 3}));

    // Restoring a port that holds no entry is the store's failure.
    uint32_t ret = 0;
    std::string out = printed([&] { ret = ke_omci_restore_the_port_to_hgu(2); });
    EXPECT_EQ(ret, 0x70000000u);
    EXPECT_EQ(out, "Del IGD_CO_VLAN_FLUSH_ALL_TAB error\n");
}

TEST_F(PortMode, NullModeUpdateIsRefusedWithoutATableCall)
{
    uint32_t ret = 0;
    std::string out = printed([&] { ret = ke_omci_update_the_cm_table(nullptr); });
    EXPECT_EQ(ret, 0x70000000u);
    EXPECT_EQ(out, "");
    EXPECT_TRUE(kestub::cm_calls().empty());
}

}  // namespace
