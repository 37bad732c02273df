#pragma once

#include "game/WQStoredObject.h"

/// A record whose fields are not known: it goes by the name of its class and keeps its bytes.
template <class Base>
class WQUndecodedObject final : public Base {
  public:
    WQUndecodedObject(ZPDataCursor &cursor, ZPGorvaneClientData *clientData)
        : Base(cursor, clientData), _data(cursor.data().begin(), cursor.data().end()) {
        cursor.setOffset(cursor.data().size());
    }

    const char *className() const override { return _className; }
    /// A text that lives as long as the program.
    void setClassName(const char *name) { _className = name; }

    /// The whole record, the identifier included.
    const ZPData &data() const { return _data; }

  private:
    ZPData _data;
    const char *_className = "WQUndecodedObject";
};

using WQUndecodedPortalObject = WQUndecodedObject<WQPortalObject>;
