// What the application's event loop and window need of help. Private to the folder.
#pragma once

class QEvent;
class QObject;

// Whether the event is F1 pressed in a widget; the help handler was called then.
bool take_help_key(QObject *receiver, const QEvent &event);
