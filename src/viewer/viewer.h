// The viewer core and image display: what other modules may know of it. Start with session.h (the run), state.h (what a
// window owns), commands.h and openers.h (how modules are joined), open_product.h (the flow from file to window).
#pragma once

#include "viewer/allocate.h"
#include "viewer/bands_window.h"
#include "viewer/commands.h"
#include "viewer/help.h"
#include "viewer/hierarchy_window.h"
#include "viewer/histogram_window.h"
#include "viewer/image_window.h"
#include "viewer/keywords_window.h"
#include "viewer/new_label_window.h"
#include "viewer/open_moc.h"
#include "viewer/open_product.h"
#include "viewer/openers.h"
#include "viewer/palette_commands.h"
#include "viewer/session.h"
#include "viewer/state.h"
#include "viewer/text_window.h"
#include "viewer/time_dialog.h"
#include "viewer/unattended.h"
