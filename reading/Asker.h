#pragma once

#include <functional>
#include <optional>

#include "reading/LibraryObject.h"
#include "reading/LoginGuard.h"
#include "reading/Query.h"

namespace Tavrin {

/// Makes the queries of one pass through the library's object, and those no more that would be in
/// vain or could do harm. What becomes of them once the SMM refused the user or was lost, or where
/// its platform is not known, Enclosure says.
class Asker {
 public:
  /// Calls one operation of the library, and hands on its status. Refers to what does that, which
  /// outlives it, and so needs no memory: a shortage is to end one query at most.
  class Call {
   public:
    template <typename Operation>
    Call(const Operation& operation) : operation_(std::cref(operation)) {}

    int operator()(SMMInventory& inventory) const { return operation_(inventory); }

   private:
    std::function<int(SMMInventory& inventory)> operation_;
  };

  /// Both outlive the asker.
  Asker(LibraryObject& object, LoginGuard& guard) : object_(object), guard_(guard) {}

  /// Makes a query, unless there is an obstacle. An exception of `call` ends the query and no
  /// other.
  QueryOutcome Ask(const Call& call);

  /// The same of a query whose request or answer depends on the SMM's platform: on a
  /// second-generation SMM the request for the chassis of one platform is that for a node of the
  /// other. Is not made where the platform has to be known and is not.
  QueryOutcome AskByPlatform(const Call& call);

  /// Why no query is made any more; nullptr as long as they are.
  [[nodiscard]] const Cause* Obstacle() const;

  /// Whether the status was read and every query since was let in.
  [[nodiscard]] bool WasAlwaysConnected() const;

 private:
  LibraryObject& object_;
  LoginGuard& guard_;
  std::optional<Cause> loss_;  ///< Why the SMM counts as lost; empty as long as it does not.
  bool isEachConnected_ = true;
};

}  // namespace Tavrin
