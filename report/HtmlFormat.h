#pragma once

#include "report/Format.h"

namespace Tavrin {

/// For people who look: one page, for a phone, a screen and paper, in light and dark. It
/// holds what it shows, runs nothing and loads nothing: no script, no image, no reference to
/// anything outside the file. It is made of printable ASCII, and well-formed as XML, too.
///
/// Each enclosure has its findings, a schematic of its nodes and PSUs, and the tables of all that
/// was read. Several begin with a wall of tiles by group, worst first, and a count by firmware.
/// Only faults have a colour, and never a colour alone: a mark and a word stand beside it. What the
/// context says is to be ignored makes nothing a fault.
Format HtmlFormat();

}  // namespace Tavrin
