#pragma once

#include "replay/ReplaySession.h"

#include <string>
#include <vector>

namespace tavrin::test {

/// Runs a script and compares what it prints with what stands in it: a line `#> JSON` after a command is that
/// command's expected output, a line `#! REASON` the error with which the script must stop there.
///
/// Returns one complaint for each difference, with the line's number, its text and both values; none when all
/// is as expected. Output that nobody expects and a script without expectations are differences.
[[nodiscard]] std::vector<std::string> checkScript(const std::string& script, replay::ReplaySession& session);

} // namespace tavrin::test
