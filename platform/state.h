// Reset hooks of the stand-in's parts, called by kestub::reset().
#ifndef KESTUB_STATE_H
#define KESTUB_STATE_H

namespace kestub {
void ipc_reset();
void log_reset();
void os_reset();
void cm_reset();
void shell_reset();
}  // namespace kestub

#endif
