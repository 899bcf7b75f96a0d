// The records people may name, every family's in one list.
#include "records.h"

namespace ketool {
namespace {

constexpr const LayoutList *kFamilies[] = {
    &kPonRecords,  &kDeviceRecords, &kBridgeQosRecords, &kStatRecords,       &kMcRecords,
    &kVlanRecords, &kVoipRecords,   &kVoipWanRecords,   &kRemoteMgmtRecords,
};

}  // namespace

const std::vector<const Layout *> &known_records()
{
    static const std::vector<const Layout *> all = [] {
        std::vector<const Layout *> layouts;
        for (const Layout *const *l : all_rows(kFamilies))
            layouts.push_back(*l);
        return layouts;
    }();
    return all;
}

const Layout *find_record(const std::string &name)
{
    for (const Layout *l : known_records())
        if (name == l->name)
            return l;
    return nullptr;
}

}  // namespace ketool
