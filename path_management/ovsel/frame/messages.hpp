#pragma once

#include <vector>

#include <ovsel/hooks.hpp>

#include "host_interfaces/ustring.hpp"

/// The three ways out of the library for a message.
enum class MessageChannel { Error, Warning, Info };

/// Sends the catalogue's text of message @p id, in the global locale, to the hook of @p channel; without a
/// hook the message is dropped.
void ReportMessage(MessageChannel channel, const char* id, std::vector<ustring> arguments = {});
