// The observer: one function per process told of every remote call made
// or served and every configuration-manager operation, as it happens.
#include <atomic>

#include "kestub.h"
#include "state.h"

namespace kestub {
namespace {

std::atomic<Observer> g_observer{nullptr};

}  // namespace

void set_observer(Observer observer) { g_observer.store(observer); }

bool observed() { return g_observer.load() != nullptr; }

void notify(const Event &event)
{
    Observer observer = g_observer.load();
    if (observer != nullptr)
        observer(event);
}

}  // namespace kestub
