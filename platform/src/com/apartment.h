// Checks whether a thread has entered COM.
#pragma once

namespace qxplatform
{

bool HasEnteredCom();

} // namespace qxplatform
