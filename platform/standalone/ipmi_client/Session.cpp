#include "platform/standalone/ipmi_client/Session.h"

#include <freeipmi/freeipmi.h>

#include <utility>

#include "platform/standalone/PassingRefusal.h"

namespace Tavrin {
namespace Standalone {
namespace {

/// Memory may be there again when it was short at first.
constexpr int kAttemptsToClose = 2;

/// Of the questions that open a session.
constexpr bool kIsOpening = true;

Failure CapabilitiesFailure(const Capabilities& capabilities, bool checksLogin) {
  if (MayPass(capabilities.completionCode)) {
    return FailureOf(Trouble::Busy);
  }
  if (!capabilities.hasIpmi20) {
    return FailureOf(Trouble::Ipmi20Missing);
  }
  if (checksLogin && !capabilities.isUserAllowed) {
    return FailureOf(Trouble::UserNameRefused);
  }
  return checksLogin && capabilities.needsKg ? FailureOf(Trouble::KeyMissing) : Failure{};
}

}  // namespace

Session::~Session() {
  for (int attempt = 0; attempt < kAttemptsToClose && stage_ != Stage::Over; ++attempt) {
    try {
      Close();
    } catch (...) {
      // Where the next attempt has no memory either, the controller finds out by itself.
    }
  }
}

Failure Session::Open() {
  for (const Step step :
       {&Session::AskCapabilities, &Session::OpenSession, &Session::LearnControllersProof,
        &Session::ProvePassword, &Session::RaisePrivilege}) {
    Failure failure = (this->*step)();
    if (failure) {
      return failure;
    }
  }
  return {};
}

Failure Session::AskCapabilities() {
  const std::uint8_t tag = conversation_.NextTag();
  const bool checksChecksums = !Has(IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_NO_CHECKSUM_CHECK);
  Capabilities capabilities;
  const auto make = [&] { return MakeCapabilitiesRequest(tag, login_.privilegeLevel); };
  const auto judge = [&](const Datagram& datagram) {
    return ReadCapabilities(datagram, tag, login_, checksChecksums, capabilities);
  };
  Failure failure = conversation_.Ask({make, judge, Trouble::NoAnswer, kIsOpening});
  if (failure) {
    return failure;
  }
  return CapabilitiesFailure(capabilities,
                             !Has(IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_AUTHENTICATION_CAPABILITIES));
}

Failure Session::OpenSession() {
  if (!DrawNumbers(handshake_)) {
    return FailureOf(Trouble::ResourcesShort);
  }
  const std::uint8_t tag = conversation_.NextTag();
  // Some controllers take the level here for the one to be held, and not for its limit.
  const std::uint8_t level = Has(IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_OPEN_SESSION_PRIVILEGE)
                                 ? login_.privilegeLevel
                                 : IPMI_PRIVILEGE_LEVEL_HIGHEST_LEVEL;
  OpenedSession opened;
  const auto make = [&] {
    return MakeOpenSessionRequest(tag, level, login_.algorithms, handshake_);
  };
  const auto judge = [&](const Datagram& datagram) {
    return ReadOpenedSession(datagram, tag, handshake_, opened);
  };
  Enter(Stage::Asked);
  Failure failure =
      conversation_.Ask({make, judge, Trouble::SilentWhileOpening, kIsOpening, kGraceToClose});
  if (failure || opened.status != 0) {
    Enter(Stage::Over);
    return failure ? failure : StatusFailure(opened.status);
  }
  handshake_.managedSystemSessionId = opened.managedSystemSessionId;
  Enter(Stage::Begun);
  return opened.maximumPrivilegeLevel < login_.privilegeLevel ? FailureOf(Trouble::PrivilegeRefused)
                                                              : Failure{};
}

Failure Session::LearnControllersProof() {
  const std::uint8_t tag = conversation_.NextTag();
  Rakp2 rakp2;
  const auto make = [&] { return MakeRakp1(tag, login_, handshake_); };
  const auto judge = [&](const Datagram& datagram) {
    return ReadRakp2(datagram, tag, login_, handshake_, rakp2);
  };
  Failure failure = conversation_.Ask({make, judge, Trouble::SilentWhileChecking, kIsOpening});
  if (failure) {
    return failure;
  }
  if (rakp2.status != 0) {
    Enter(Stage::Over);
    return StatusFailure(rakp2.status);
  }
  if (!rakp2.provesPassword) {
    return FailureOf(Trouble::PasswordRefused);
  }
  handshake_.managedSystemRandomNumber = rakp2.managedSystemRandomNumber;
  handshake_.managedSystemGuid = rakp2.managedSystemGuid;
  return keys_.Compute(login_, handshake_) ? Failure{} : FailureOf(Trouble::ResourcesShort);
}

Failure Session::ProvePassword() {
  rakpTag_ = conversation_.NextTag();
  std::uint8_t status{};
  const auto make = [&] {
    Datagram rakp3 = MakeRakp3(rakpTag_, login_, handshake_);
    Enter(Stage::MayBeOpen);
    return rakp3;
  };
  const auto judge = [&](const Datagram& datagram) {
    return ReadRakp4(datagram, rakpTag_, login_, handshake_, keys_,
                     Has(IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_NON_EMPTY_INTEGRITY_CHECK_VALUE),
                     status);
  };
  Failure failure = conversation_.Ask({make, judge, Trouble::SilentWhileChecking, kIsOpening});
  if (!failure && status != 0) {
    Enter(Stage::Over);
    return StatusFailure(status);
  }
  isProven_ = !failure;
  // Once the session is open, the controller need not answer a repetition. Whether it is open shows
  // in the next step, where an authenticated answer proves that both have the same keys.
  const bool showsLater = login_.algorithms.integrity != IPMI_INTEGRITY_ALGORITHM_NONE;
  return showsLater ? Failure{} : failure;
}

Failure Session::RaisePrivilege() {
  IPMICOMMAND request;
  request.netFn = IPMI_NET_FN_APP_RQ;
  request.cmd = IPMI_CMD_SET_SESSION_PRIVILEGE_LEVEL;
  request.data = {login_.privilegeLevel};
  SessionAnswer answer;
  Question question = MakeQuestion(request, answer);
  question.silence = Trouble::SilentWhileOpening;
  const auto judgeInSession = std::move(question.judge);
  question.judge = [&](const Datagram& datagram) {
    return JudgeWhileRaising(datagram, judgeInSession);
  };
  Failure failure = conversation_.Ask(question);
  if (lateStatus_ != 0) {
    return StatusFailure(lateStatus_);
  }
  if (answer.completionCode == 0) {  // As it is without an answer.
    return failure;
  }
  return CompletionCodeFailure("Set Session Privilege Level", answer.completionCode);
}

/// A refusal in a RAKP message 4 that came too late for its step ends this one. Nothing protects
/// such a message, so once the controller has proven its keys, none ends the session any more: a
/// repetition of RAKP message 3 may be refused, and anybody may forge a refusal.
Verdict Session::JudgeWhileRaising(const Datagram& datagram, const Judge& judgeInSession) {
  if (isProven_) {
    return judgeInSession(datagram);
  }
  std::uint8_t status{};
  // Refusals alone are of interest here, and these have no check value to be lenient about.
  ReadRakp4(datagram, rakpTag_, login_, handshake_, keys_, false, status);
  if (status != 0) {
    lateStatus_ = status;
    return Verdict::Answer;
  }
  return judgeInSession(datagram);
}

Failure Session::Exchange(const IPMICOMMAND& request, std::vector<std::uint8_t>& response,
                          std::uint8_t& completionCode) {
  SessionAnswer answer;
  Failure failure = conversation_.Ask(MakeQuestion(request, answer));
  if (!failure) {
    response = std::move(answer.data);
    completionCode = answer.completionCode;
  }
  return failure;
}

void Session::Enter(Stage stage) {
  if (stage == Stage::Over) {
    counted_.reset();
  } else if (!counted_) {
    counted_.emplace();
  }
  stage_ = stage;
}

void Session::Close() {
  if (stage_ == Stage::MayBeOpen) {
    AskToClose();
  } else if (stage_ == Stage::Begun) {
    // The controller, which cannot know it otherwise, has the session back at once.
    conversation_.Tell(MakeRakp3Refusal(conversation_.NextTag(), handshake_));
  }
  Enter(Stage::Over);
}

void Session::AskToClose() {
  const std::uint32_t id = handshake_.managedSystemSessionId;
  IPMICOMMAND request;
  request.netFn = IPMI_NET_FN_APP_RQ;
  request.cmd = IPMI_CMD_CLOSE_SESSION;
  for (unsigned int shift = 0; shift < 32; shift += 8) {
    request.data.push_back(static_cast<std::uint8_t>(id >> shift & 0xFFU));
  }
  SessionAnswer answer;
  Question question = MakeQuestion(request, answer);
  question.grace = kGraceToClose;
  conversation_.AskInPassing(question);
}

/// A repetition has the requester sequence number of its request, so that a controller can tell it
/// from another request, and a session sequence number of its own. The question refers to `answer`
/// and to `request`.
Question Session::MakeQuestion(const IPMICOMMAND& request, SessionAnswer& answer) {
  const std::uint8_t requesterSequenceNumber = conversation_.NextTag();
  const auto make = [this, &request, requesterSequenceNumber] {
    ++sequenceNumber_;
    return MakeRequest({IPMI_PAYLOAD_TYPE_IPMI, handshake_.managedSystemSessionId, sequenceNumber_,
                        request.netFn, requesterSequenceNumber},
                       Protect(), request);
  };
  const auto judge = [this, &request, requesterSequenceNumber, &answer](const Datagram& datagram) {
    return JudgeAnswer(datagram, request, requesterSequenceNumber, answer);
  };
  return {make, judge, Trouble::SilentToRequest};
}

Verdict Session::JudgeAnswer(const Datagram& datagram, const IPMICOMMAND& request,
                             std::uint8_t requesterSequenceNumber, SessionAnswer& answer) {
  ExpectedAnswer expected;
  expected.remoteConsoleSessionId = handshake_.remoteConsoleSessionId;
  expected.requesterSequenceNumber = requesterSequenceNumber;
  expected.networkFunction = request.netFn;
  expected.command = request.cmd;
  expected.lastSequenceNumber = lastAnswer_;
  expected.checksChecksums = !Has(IPMI_WORKAROUND_FLAGS_OUTOFBAND_2_0_NO_CHECKSUM_CHECK);
  const Verdict verdict = ReadAnswer(datagram, Protect(), expected, answer);
  if (verdict == Verdict::Answer) {
    lastAnswer_ = answer.sequenceNumber;
  }
  return verdict;
}

Protection Session::Protect() const {
  return {login_.algorithms, keys_, login_.password, login_.passwordLength};
}

bool Session::Has(unsigned int workaround) const {
  return (settings_.workaroundFlags & workaround) != 0;
}

}  // namespace Standalone
}  // namespace Tavrin
