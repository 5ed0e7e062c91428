// Umbrella header: includes every public header of libkybase.
#ifndef KYBASE_KYBASE_H
#define KYBASE_KYBASE_H

#include "kybase/core/export.h"
#include "kybase/core/memory_manager.h"
#include "kybase/core/memory_pool.h"
#include "kybase/containers/hash_table.h"

#endif  // KYBASE_KYBASE_H
