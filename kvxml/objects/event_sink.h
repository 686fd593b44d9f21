/// How collections tell their owners about changes.
#pragma once

#include <cstdint>

#include "kvxml/export.h"

namespace KvXmlLib16 {

class CXmlObjectBase;

/// Receiver of collection events. A listener is not owned by the collection it listens to and must remove
/// itself before it dies.
class KVXML_EXPORT IEventSink {
public:
    /// What happened; the comment gives the data that `OnEvent` receives with it.
    enum MsgType : std::int32_t {
        MsgType_Change = 0,          ///< null
        MsgType_Add = 1,             ///< the item
        MsgType_AddComplete = 2,     ///< the item
        MsgType_Remove = 3,          ///< const std::int32_t*: the index; null when there is none
        MsgType_RemoveComplete = 4,  ///< as for MsgType_Remove
    };

    /// Called with the collection as `source`. An exception thrown from MsgType_Add or MsgType_Remove stops
    /// the operation before anything has changed.
    virtual void OnEvent(CXmlObjectBase* source, MsgType type, void* data) = 0;
    /// The object that this sink is.
    virtual CXmlObjectBase* GetBase() = 0;

protected:
    ~IEventSink() = default;
};

}  // namespace KvXmlLib16
