// Replays a fuzz target's inputs without the fuzzer: every file named on
// the command line, or every file of a directory named there, in name
// order.  Built into each target in the normal builds, so that CI runs
// the committed corpus (the seeds and every input that once found a
// fault) under the build's own compiler and sanitizers.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);
extern "C" int LLVMFuzzerInitialize(int *argc, char ***argv) __attribute__((weak));

namespace {

// The skip status CTest is told about: a target that cannot run here.
constexpr int kSkipped = 77;

bool is_dir(const std::string &path)
{
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void add_inputs(const std::string &path, std::vector<std::string> *files)
{
    if (!is_dir(path)) {
        files->push_back(path);
        return;
    }
    std::vector<std::string> found;
    if (DIR *d = opendir(path.c_str())) {
        while (const dirent *e = readdir(d)) {
            std::string file = path + "/" + e->d_name;
            if (e->d_name[0] != '.' && !is_dir(file))
                found.push_back(file);
        }
        closedir(d);
    }
    std::sort(found.begin(), found.end());
    files->insert(files->end(), found.begin(), found.end());
}

// The file is closed before the target runs: a target may count the
// descriptors its code leaves open.
bool read_file(const std::string &path, std::vector<uint8_t> *bytes)
{
    std::ifstream in(path, std::ios::binary);
    if (!in)
        return false;
    bytes->assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return true;
}

}  // namespace

int main(int argc, char **argv)
{
    if (const char *why = std::getenv("KE_FUZZ_SKIP")) {
        std::printf("%s: skipped: %s\n", argv[0], why);
        return kSkipped;
    }
    if (LLVMFuzzerInitialize != nullptr)
        LLVMFuzzerInitialize(&argc, &argv);
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i)
        add_inputs(argv[i], &files);
    if (files.empty()) {
        std::fprintf(stderr, "%s: no inputs to replay\n", argv[0]);
        return 1;
    }
    for (const std::string &file : files) {
        std::vector<uint8_t> bytes;
        if (!read_file(file, &bytes)) {
            std::fprintf(stderr, "%s: cannot read %s\n", argv[0], file.c_str());
            return 1;
        }
        std::fprintf(stderr, "replaying %s (%zu bytes)\n", file.c_str(), bytes.size());
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::fprintf(stderr, "%s: replayed %zu inputs\n", argv[0], files.size());
    return 0;
}
