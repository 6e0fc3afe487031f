#pragma once

#include "replay/Arguments.h"
#include "replay/ReplaySession.h"

namespace tavrin::replay {

/// `print popup`: the completion list that is up.
void printPopup(ReplaySession& session, Arguments& arguments, json::Writer& out);

// What the parser tells of a position.

void printParent(ReplaySession& session, Arguments& arguments, json::Writer& out);
void printOpenTag(ReplaySession& session, Arguments& arguments, json::Writer& out);
void printAttribute(ReplaySession& session, Arguments& arguments, json::Writer& out);
void printIsTag(ReplaySession& session, Arguments& arguments, json::Writer& out);
void printIsTagStart(ReplaySession& session, Arguments& arguments, json::Writer& out);
void printIsAttribute(ReplaySession& session, Arguments& arguments, json::Writer& out);
void printIsAttributeValue(ReplaySession& session, Arguments& arguments, json::Writer& out);

} // namespace tavrin::replay
