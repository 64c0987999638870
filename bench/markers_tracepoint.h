// The tracepoint of lttng-ust with which markers are compared. Its macros include this header several times.
#undef LTTNG_UST_TRACEPOINT_PROVIDER
#define LTTNG_UST_TRACEPOINT_PROVIDER qxut_bench
#undef LTTNG_UST_TRACEPOINT_INCLUDE
#define LTTNG_UST_TRACEPOINT_INCLUDE "./markers_tracepoint.h"

#if !defined(QXUT_MARKERS_TRACEPOINT_H) || defined(LTTNG_UST_TRACEPOINT_HEADER_MULTI_READ)
#define QXUT_MARKERS_TRACEPOINT_H

#include <lttng/tracepoint.h>

LTTNG_UST_TRACEPOINT_EVENT(qxut_bench, mark, LTTNG_UST_TP_ARGS(const char*, lane, const char*, text, int, id),
    LTTNG_UST_TP_FIELDS(
        lttng_ust_field_string(lane, lane) lttng_ust_field_string(text, text) lttng_ust_field_integer(int, id, id)))

#endif

#include <lttng/tracepoint-event.h>
