/* Includes all public headers of the library. Valid C11 and C++17. */
#ifndef QXUT23_QXUT23_H
#define QXUT23_QXUT23_H

#include <qxut23/access.h>
#include <qxut23/addresses.h>
#include <qxut23/archives.h>
#include <qxut23/base.h>
#include <qxut23/breakpoints.h>
#include <qxut23/bstr.h>
#include <qxut23/charset.h>
#include <qxut23/convert.h>
#include <qxut23/countries.h>
#include <qxut23/dates.h>
#include <qxut23/debug.h>
#include <qxut23/docinfo.h>
#include <qxut23/docinfo_explain.h>
#include <qxut23/errors.h>
#include <qxut23/handles.h>
#include <qxut23/heaps.h>
#include <qxut23/iso_countries.h>
#include <qxut23/jobs.h>
#include <qxut23/leaks.h>
#include <qxut23/log_setting.h>
#include <qxut23/markup.h>
#include <qxut23/module.h>
#include <qxut23/packed_text.h>
#include <qxut23/page_text.h>
#include <qxut23/paths.h>
#include <qxut23/profile.h>
#include <qxut23/profile_files.h>
#include <qxut23/profile_source.h>
#include <qxut23/profile_values.h>
#include <qxut23/stacks.h>
#include <qxut23/strings.h>
#include <qxut23/tempfiles.h>
#include <qxut23/traces.h>
#include <qxut23/zip.h>

#endif
