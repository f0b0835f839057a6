// Every menu command with what runs it.
#pragma once

#include "viewer/viewer.h"

#include <span>

std::span<const CommandRow> lumacart_commands();
