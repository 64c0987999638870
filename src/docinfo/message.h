// Reads messages that mail programs store in their own format: compound files with the extension ".msg" ([MS-OXMSG]).
#pragma once

#include "docinfo/document_record.h"

namespace qx
{

// The subject becomes the title, the sender the author, and the recipients the last author, separated by "; ". The date
// of creation is the time when the message was sent. Returns 0, or the system's error if the file can't be opened.
//
// Reads at most 64 MB of text in total.
int ReadMessage(clsDocu& record, const String& path);

} // namespace qx
