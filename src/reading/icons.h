#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tidewrack {

/// The name in the icon theme of the bundled symbolic icon for a platform symbol name, for example
/// "tray.fill" gives "tw-inbox-fill-symbolic". A name that the bundle does not know gives a question mark.
std::string iconName(std::string_view symbol);

/// Every symbol name that the bundle knows, in ascending order.
std::vector<std::string_view> knownSymbols();

}  // namespace tidewrack
