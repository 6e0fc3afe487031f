#pragma once

#include "replay/Arguments.h"
#include "replay/ReplaySession.h"

namespace tavrin::replay {

/// `options ...`: what the user of the options page does.
void runOptions(ReplaySession& session, Arguments& arguments);
/// `print options`: what the page shows; null while it is closed.
void printOptions(ReplaySession& session, json::Writer& out);
/// `print preview`: the page's sample; null while the page is closed.
void printPreview(ReplaySession& session, json::Writer& out);

} // namespace tavrin::replay
