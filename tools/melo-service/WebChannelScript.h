// The client library of Qt WebChannel, as built into the Qt module, so the
// pages get the very script the application's channel speaks to.
#pragma once

#include <string>

// Empty when the module's resource cannot be read.
std::string webChannelScript();
