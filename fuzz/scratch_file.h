// The scratch file /tmp/tmp_uci_value, kept in memory for the harnesses
// that drive the uci toolkit: this program's own fopen, fopen64 and
// unlink take the library's calls for that one path, so that a fuzzer
// never touches (nor races with a test over) the real file.
#ifndef KE_FUZZ_SCRATCH_FILE_H
#define KE_FUZZ_SCRATCH_FILE_H

#include <string>

namespace kefuzz::scratch {

inline constexpr char kPath[] = "/tmp/tmp_uci_value";

// What a shell redirection into the file leaves: the file, with text.
void write(const std::string &text);
// No file, as after a read deleted it.
void remove();
bool exists();
// How often the library opened and deleted the file since reset().
unsigned opens();
unsigned unlinks();
void reset();

}  // namespace kefuzz::scratch

#endif
