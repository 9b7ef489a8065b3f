#pragma once

#include <QtGlobal>

#if defined(oztesting_EXPORTS)
#define OZ_TESTING_EXPORT Q_DECL_EXPORT
#else
#define OZ_TESTING_EXPORT Q_DECL_IMPORT
#endif
