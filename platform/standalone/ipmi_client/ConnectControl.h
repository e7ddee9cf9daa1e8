#pragma once

namespace Tavrin {
namespace Standalone {

// For programs that have to end while exchanges are under way.

/// Ends the exchanges of all threads, those under way and all later ones, until AllowExchanges():
/// within a tenth of a second no answer is waited for any more, and connect() and send() fail with
/// FailureCause::Stopped, which is not worth retrying. A session that is open is closed on its own
/// thread, which waits a third of a second at most for the controller to say so; one that was just
/// asked for is waited for as long, so that it can be closed, too.
///
/// Pauses that are not the client's, and a name server's silence, are not cut short. May be called
/// from any thread and in the handler of a signal; a second call changes nothing. A child of fork()
/// begins as its parent was.
void StopExchanges() noexcept;

/// Lets exchanges begin again, for a program that goes on after all. What ended, ended.
void AllowExchanges() noexcept;

/// Whether StopExchanges() holds.
bool AreExchangesStopped() noexcept;

/// How many sessions the controllers may hold open for this process, those that are being opened or
/// closed included. Once it is 0 behind StopExchanges(), the process can end without leaving a
/// controller to find out by itself: controllers have few sessions, and keep one for a minute.
///
/// An exchange that was under way may still ask for a session within a tenth of a second, so that a
/// 0 counts only after that time.
int CountOpenSessions() noexcept;

}  // namespace Standalone
}  // namespace Tavrin
