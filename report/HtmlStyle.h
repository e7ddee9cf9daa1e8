#pragma once

namespace Tavrin {

/// The style sheet of a page, for the inside of a `style` element: readable at the width of a
/// phone, on paper, and in light and dark as the reader's system has it. It names nothing outside
/// the page. Elements are coloured by the classes of HtmlClass().
extern const char* const kHtmlStyle;

}  // namespace Tavrin
