// Every class of object with the window that shows it.
#pragma once

#include "viewer/viewer.h"

#include <span>

std::span<const ProductOpener> lumacart_openers();
