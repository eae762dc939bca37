#ifndef TESTS_FAKES_FAKEWORKERTHREAD_H_
#define TESTS_FAKES_FAKEWORKERTHREAD_H_

/// Real threads that can be waited for, and refused, behind platform/WorkerThread.h.
namespace fake_worker_thread {

/// Waits for every worker; then workers can be started again, on threads, none has been, and none
/// is refused or held.
void Reset();
/// Waits until every worker started so far has run and its work is destroyed.
void JoinAll();
/// Lets no further worker start.
void Refuse();
/// Workers that are started from now on begin when somebody waits for them, so that what they do
/// always happens at the same point.
void Hold();
/// Lets every further worker run to its end before the call that starts it returns.
void RunAtOnce();
/// How many were started since Reset.
int Started();

}  // namespace fake_worker_thread

#endif  // TESTS_FAKES_FAKEWORKERTHREAD_H_
