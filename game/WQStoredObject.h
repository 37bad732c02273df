#pragma once

#include "archive/ZPGorvaneStoredObject.h"

/// A record of the first game's archives.
class WQStoredObject : public ZPGorvaneStoredObject {
  public:
    using ZPGorvaneStoredObject::ZPGorvaneStoredObject;
    const char *className() const override { return "WQStoredObject"; }
};

/// A record of the portal, high-resolution and local archives.
class WQPortalObject : public WQStoredObject {
  public:
    using WQStoredObject::WQStoredObject;
    const char *className() const override { return "WQPortalObject"; }
};

/// A record of the cell archive.
class WQCellObject : public WQStoredObject {
  public:
    using WQStoredObject::WQStoredObject;
    const char *className() const override { return "WQCellObject"; }
    std::string extension() const override { return "txt"; }
};
