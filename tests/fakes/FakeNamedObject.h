#ifndef TESTS_FAKES_FAKENAMEDOBJECT_H_
#define TESTS_FAKES_FAKENAMEDOBJECT_H_

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

/// Named objects in memory, behind platform/NamedObject.h.
namespace fake_named_object {

/// Forgets the calls and sets the answers back: mutexes can be created, waits succeed, no event.
void Reset();
/// Every call since Reset, as text.
std::vector<std::string> Calls();
void AnswerWait(std::uint32_t result);
void RefuseMutexes();
void OfferEvent(const std::string& name);
/// Called when somebody signals an event, before it is signalled. Set it while no worker runs.
void OnSignal(std::function<void()> hook);

}  // namespace fake_named_object

#endif  // TESTS_FAKES_FAKENAMEDOBJECT_H_
