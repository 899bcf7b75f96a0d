// Field offsets and masks of the multicast tables.  Every record starts
// with two head words sent as 0; the user port, where a table has one,
// sits at offset 8, and the field mask in the record's last four bytes.
#ifndef KE_MC_TABLES_H
#define KE_MC_TABLES_H

#include <cstdint>

namespace ke::mc {

struct CtrlTypeTab {  // 819
    static constexpr uint32_t ui_ctrl_type = 8;
    static constexpr uint32_t kMask = 4;
};

struct VerTab {  // 820
    static constexpr uint32_t ui_ver = 8;
    static constexpr uint32_t kMask = 4;
};

struct ModeTab {  // 826
    static constexpr uint32_t ui_flag0 = 8;  // then ui_flag1 to ui_flag3, one word each
    static constexpr uint32_t kMask = 60;
};

struct GlbAttrTab {  // 821
    static constexpr uint32_t ui_quickleave_off = 12;
    static constexpr uint32_t kMask = 8;
};

struct PortTab {  // 822
    static constexpr uint32_t ui_port_mode = 12;
    static constexpr uint32_t ui_up_transparent = 16;
    static constexpr uint32_t ui_upvlan = 20;
    static constexpr uint32_t ui_uppri = 24;
    static constexpr uint32_t ui_upgemport = 32;
    static constexpr uint32_t ui_down_tagact = 36;
    static constexpr uint32_t ui_usrvlan = 40;
    static constexpr uint32_t kMask = 124;
    // ui_port_mode values.
    static constexpr uint32_t kModeHgu = 1;
    static constexpr uint32_t kModeSfu = 2;
};

struct GroupNumTab {  // 818
    static constexpr uint32_t ui_group_num = 12;
    static constexpr uint32_t kMask = 12;
};

struct UprateTab {  // 825
    static constexpr uint32_t ui_uprate = 12;
    static constexpr uint32_t ui_fixed = 16;
    static constexpr uint32_t kFixed = 6;
    static constexpr uint32_t kMask = 28;
};

struct VlanTab {  // 824
    static constexpr uint32_t aui_vlan = 12;  // MC_VLAN_MAX slots, one word each
    static constexpr uint32_t kMask = 12;
};

struct MemberTab {  // 808, as the multicast VLAN list writes it
    static constexpr uint32_t ui_vid = 12;
    static constexpr uint32_t kMask = 12;
    // Every multicast VLAN is also a member of this port.
    static constexpr uint32_t kCounterpartPort = 8;
};

struct RangeTab {  // 817
    static constexpr uint32_t ast_range = 12;  // MC_RANGE_MAX entries
    static constexpr uint32_t kEntrySize = 36;
    static constexpr uint32_t auc_ip_start = 0;  // within an entry
    static constexpr uint32_t auc_ip_end = 16;
    static constexpr uint32_t ui_valid = 32;
    static constexpr uint32_t kMask = 12;
    static constexpr uint32_t kClearGetMask = 14;

    static constexpr uint32_t entry(uint32_t i) { return ast_range + kEntrySize * i; }
};

}  // namespace ke::mc

#endif
