#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "support/HostAndPort.h"

namespace Tavrin {

/// The most hosts that one list, one hosts file and one run may name.
constexpr std::size_t kMostHosts = 4096;

/// Takes a list apart at its commas, except those within brackets, and leaves each item as it is
/// written. Throws UsageError, with the position, where nothing stands between two commas, before
/// the first or behind the last.
std::vector<std::string> SplitHostList(const std::string& text);

/// The hosts that a list such as `rack[01-40],n[1-3,7]-bmc:6230,[2001:db8::1]:623` names, in the
/// order written; one that is named twice is there twice.
///
/// An item is a host as ParseHost() takes it. In a name, an IPv4 address or a port, any stretch may
/// be numbers in brackets instead: single ones and ranges, `[1-3,7]`, the latter with a step where
/// one is written, `[1-9/4]`. Several brackets vary like the digits of a counter, the last one
/// fastest. Numbers are expanded as written: where an end of a range has a leading zero, all its
/// numbers are as wide as that, which both ends have to be. A bracket at the start of an item is no
/// range but an IPv6 address, and that holds no ranges.
///
/// Throws UsageError, which names the item and, where the brackets are at fault, the position in
/// it: a range that is reversed, empty or open, an item that is no host, and more than kMostHosts
/// hosts, before any of them takes memory.
std::vector<HostAndPort> ExpandHosts(const std::string& text);

/// Whether the text has the form of a list or a range, however many hosts it names.
bool IsHostRange(const std::string& text);

/// A short list that ExpandHosts() makes these hosts of, in their order. Neighbours that differ in
/// one number are folded: `rack[03,17-18]`. The hosts have to be such as ParseHost() gives.
std::string FoldHosts(const std::vector<HostAndPort>& hosts);

}  // namespace Tavrin
