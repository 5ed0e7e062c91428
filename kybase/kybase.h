// Umbrella header: includes every public header of libkybase.
#ifndef KYBASE_KYBASE_H
#define KYBASE_KYBASE_H

#include "kybase/core/export.h"
#include "kybase/core/memory_manager.h"
#include "kybase/core/memory_pool.h"
#include "kybase/core/global_context.h"
#include "kybase/containers/array.h"
#include "kybase/containers/hash_table.h"
#include "kybase/containers/list.h"
#include "kybase/containers/symbol.h"
#include "kybase/containers/typed_lists.h"
#include "kybase/text/number_text.h"
#include "kybase/text/numeric.h"
#include "kybase/text/internal_string.h"
#include "kybase/text/kystring.h"
#include "kybase/text/mb_string.h"
#include "kybase/text/sb_string.h"
#include "kybase/locale/days_of_week.h"
#include "kybase/locale/kylocale.h"
#include "kybase/locale/locale_descriptor.h"
#include "kybase/locale/locale_extension.h"
#include "kybase/locale/locale_tables.h"
#include "kybase/xml/xml_document.h"
#include "kybase/xml/xml_error.h"
#include "kybase/xml/xml_factory.h"
#include "kybase/xml/xml_iterators.h"
#include "kybase/xml/xml_node.h"
#include "kybase/url/ky_zlib.h"
#include "kybase/url/url_stream.h"

#endif  // KYBASE_KYBASE_H
