# QEL_PUBLIC_HEADERS: the headers that are installed and must compile on their own, as paths from the repository's root.
# All headers of the library, Core and the host framework are public, except the following headers. No public header may
# include these.
set(privateHeaders
    Application/Log/Analytics/Client/PackageBatch.h
    Application/Log/Analytics/Client/SendingPass.h
    Application/Log/Analytics/Client/SendingState.h
    Application/Log/Analytics/Items/CatalogueText.h
    Application/Log/Analytics/Listeners/InsertItem.h
    host/QelAssert/HandlerOfThread.h
    host/QelHttp/Connection.h
    host/QelHttp/ConnectionPool.h
    host/QelHttp/SettingsInForce.h
    host/QelLog/LogQueue.h
    host/QelNotification/Fields.h
    host/QelNotification/NotificationTable.h
    host/QelNotification/PlainFields.h
    host/QelSql/BusyWait.h
    host/QelSql/Connection.h
    host/QelSql/Database.h
    host/QelSql/DatabaseFile.h
    host/QelSql/DatabaseLock.h
    host/QelSql/DatabaseLog.h
    host/QelSql/LockFile.h
    host/QelSql/Schema.h
    host/QelSql/Transaction.h)
file(GLOB_RECURSE QEL_PUBLIC_HEADERS CONFIGURE_DEPENDS RELATIVE ${PROJECT_SOURCE_DIR} Application/*.h Core/*.h
     host/*.h)
list(REMOVE_ITEM QEL_PUBLIC_HEADERS ${privateHeaders})
# The C interface has a header of its own, and is no part of the library.
list(FILTER QEL_PUBLIC_HEADERS EXCLUDE REGEX "^host/QelC/")
