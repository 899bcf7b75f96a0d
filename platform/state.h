// Reset hooks of the stand-in's parts, called by kestub::reset().
#ifndef KESTUB_STATE_H
#define KESTUB_STATE_H

#include <cstdint>
#include <string>
#include <vector>

#include "kestub.h"

namespace kestub {
void ipc_reset();
void log_reset();
void os_reset();
void cm_reset();
void shell_reset();

// The handler this process serves name with (ipc_serve), or nullptr.
IpcHandler local_handler(const char *name);
// Every name served with ipc_serve.
std::vector<std::string> local_names();
// A call of a name nobody serves here, over the socket transport.
uint32_t socket_call(const char *name, void *buf, uint32_t len);
// The exported function called name in the loaded object at path ("" for
// the program), or nullptr.
IpcHandler section_entry(const std::string &path, const std::string &name);
// Tell the observer, if any.
void notify(const Event &event);
// True when an observer is set.
bool observed();
}  // namespace kestub

#endif
