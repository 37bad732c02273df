#pragma once

#include "archive/ZPGorvaneStoredObject.h"

/// The record that holds an archive's data version. The base reads no field; a family's own class
/// knows the layout.
class ZPGorvaneVersion : public ZPGorvaneStoredObject {
  public:
    /// Its identifier in every archive.
    static constexpr std::uint32_t kIdentifier = 0xFFFF0001;
    static constexpr bool isIdentifierInData = false;

    ZPGorvaneVersion(ZPDataCursor &cursor, ZPGorvaneClientData *clientData)
        : ZPGorvaneStoredObject(cursor, clientData, isIdentifierInData) {}

    std::uint32_t version() const { return _version; }

    const char *className() const override { return "ZPGorvaneVersion"; }
    /// "version: %u\n".
    std::string dumpText() const override;
    std::string description() const override;

  protected:
    void setVersion(std::uint32_t version) { _version = version; }

  private:
    std::uint32_t _version = 0;
};
