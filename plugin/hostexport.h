// Visibility of the host library's symbols.
#pragma once

#include <QtGlobal>

/// \def CANSERVICE_EXPORT
/// Goes before what the host library has and a service needs.
#ifdef CANSERVICE_BUILD_HOST
#    define CANSERVICE_EXPORT Q_DECL_EXPORT
#else
#    define CANSERVICE_EXPORT Q_DECL_IMPORT
#endif
