#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "platform/IpmiClient.h"
#include "platform/standalone/ipmi_client/ConnectSettings.h"
#include "platform/standalone/ipmi_client/Conversation.h"
#include "platform/standalone/ipmi_client/Failure.h"
#include "platform/standalone/ipmi_client/Interruption.h"
#include "platform/standalone/ipmi_client/OpeningMessages.h"
#include "platform/standalone/ipmi_client/SessionKeys.h"
#include "platform/standalone/ipmi_client/SessionMessages.h"

namespace Tavrin {
namespace Standalone {

/// A session of IPMI 2.0. It refers to the conversation and to the texts of its login, which
/// outlive it. At its end it tells the controller, if that may hold it for open; what becomes of
/// that matters to nobody but the controller.
class Session {
 public:
  Session(Conversation& conversation, const Login& login, const ConnectSettings& settings)
      : conversation_(conversation), login_(login), settings_(settings) {}
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /// The five steps that open a session: what the controller can do, the session's number, the
  /// proof of the password in two steps, the privilege level.
  Failure Open();

  /// Fills `response` and `completionCode` when it does not fail.
  Failure Exchange(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                   std::uint8_t& completionCode);

 private:
  /// What the controller has of the session, as far as it is known here.
  enum class Stage {
    Over,       ///< Nothing: it was not begun, was refused, or was closed.
    Asked,      ///< Maybe a session whose number has not come yet, so that none can be ended.
    Begun,      ///< A session that waits for the proof of the password.
    MayBeOpen,  ///< One that counts as open once the proof has arrived there.
  };

  /// One of the steps.
  using Step = Failure (Session::*)();

  Failure AskCapabilities();
  Failure OpenSession();
  Failure LearnControllersProof();  ///< RAKP messages 1 and 2.
  Failure ProvePassword();          ///< RAKP messages 3 and 4.
  Failure RaisePrivilege();
  void Enter(Stage stage);
  void Close();  ///< Only what is not over yet.
  void AskToClose();

  /// A question that goes within the session.
  Question MakeQuestion(const IPMICOMMAND& request, SessionAnswer& answer);
  Verdict JudgeAnswer(const Datagram& datagram, const IPMICOMMAND& request,
                      std::uint8_t requesterSequenceNumber, SessionAnswer& answer);
  Verdict JudgeWhileRaising(const Datagram& datagram, const Judge& judgeInSession);
  [[nodiscard]] Protection Protect() const;
  [[nodiscard]] bool Has(unsigned int workaround) const;

  Conversation& conversation_;
  Login login_;
  ConnectSettings settings_;
  Handshake handshake_;
  SessionKeys keys_;
  std::uint32_t sequenceNumber_ = 0;  ///< Of the last request sent.
  std::optional<std::uint32_t> lastAnswer_;
  std::uint8_t rakpTag_{};       ///< Of RAKP messages 3 and 4.
  std::uint8_t lateStatus_ = 0;  ///< Of a RAKP message 4 that came after its step.
  bool isProven_{};              ///< A RAKP message 4 came whose check value is right.
  Stage stage_ = Stage::Over;
  std::optional<CountedSession> counted_;  ///< While it is not over.
};

}  // namespace Standalone
}  // namespace Tavrin
