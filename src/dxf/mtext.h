#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace dxfimport {

// The plain lines of an MTEXT value: paragraphs (\P), column breaks and caret line feeds
// (^J) split it; formatting codes (fonts, heights, colours, alignment, tracking, ...),
// grouping braces and toggles are removed; escaped \\ \{ \} stand for themselves; \~ is a
// space; a stacked fraction \Sa^b; becomes a/b; %%c, %%d and %%p are the diameter,
// degree and plus-minus signs.
std::vector<std::string> MTextLines(std::string_view text);

}  // namespace dxfimport
