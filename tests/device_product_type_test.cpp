// The product type: the text of the system-information reply, compared
// without regard to case.  The cache is filled once per process, so no
// test of this program fills it in the parent.
#include <dlfcn.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include "ke_omci_tapi/device.h"
#include "stub_test.h"
#include "sysinfo_replies.h"

namespace {

using ketest::Bytes;
using ketest::patterned;
using ketest::script;
using ketest::sysinfo_reply;

class Sysinfo : public ketest::StubTest {};

// A copy of the library loaded from its own file: its state is the state
// at load, whatever the copy linked into this program has cached.
class FreshLibrary {
public:
    FreshLibrary()
    {
        char name[] = "/tmp/ke_omci_tapi_copy_XXXXXX";
        int fd = mkstemp(name);
        if (fd < 0)
            return;
        close(fd);
        path_ = name;
        std::ifstream in(KE_LIBRARY_PATH, std::ios::binary);
        std::ofstream(path_, std::ios::binary) << in.rdbuf();
        handle_ = dlopen(path_.c_str(), RTLD_NOW | RTLD_LOCAL);
    }
    ~FreshLibrary()
    {
        if (handle_ != nullptr)
            dlclose(handle_);
        if (!path_.empty())
            unlink(path_.c_str());
    }
    FreshLibrary(const FreshLibrary &) = delete;
    FreshLibrary &operator=(const FreshLibrary &) = delete;

    template <class T>
    T *symbol(const char *name) const
    {
        return handle_ != nullptr ? reinterpret_cast<T *>(dlsym(handle_, name)) : nullptr;
    }

private:
    std::string path_;
    void *handle_ = nullptr;
};

// Each case reads the product type through a fresh copy of the library,
// which fetches it; the answer is the code found (99 when the read failed).
TEST_F(Sysinfo, ProductTypeIgnoresLetterCaseButNotExtraCharacters)
{
    struct { const char *text; uint32_t code; } cases[] = {
        {"sFu", 0}, {"Hgu", 1},  {"SBU", 2}, {"sbU", 2},  {"SFU1", 15},
        {" SBU", 15}, {"SF", 15}, {"", 15},  {"ONT", 15}, {nullptr, 15}};
    for (const auto &c : cases) {
        FreshLibrary lib;
        auto *get = lib.symbol<uint32_t(st_sysinfo *)>("ke_omci_tapi_sysinfo_get");
        ASSERT_NE(get, nullptr);

        Bytes info = patterned(720, 5);
        if (c.text != nullptr)
            info = sysinfo_reply(c.text, 5);
        else  // no terminator up to the end of the reply
            std::memset(info.data() + 255, 'S', 720 - 255);
        script("ke_ke_board_info_get_call", patterned(956, 3));
        script("ke_ke_sysinfo_data_get_call", info);
        st_sysinfo out;
        uint32_t found = get(&out) == 0 ? out.ui_product_type : 99;
        EXPECT_EQ(found, c.code) << (c.text ? c.text : "(unterminated)");
        EXPECT_EQ(kestub::ipc_calls().size(), 2u) << "a fresh copy fetches";
        kestub::reset();
    }
}

}  // namespace
