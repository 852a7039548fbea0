#include <zel/zelFormat.h>

#include "registry/text.h"

#include <zel/zelFormatDB.h>

namespace {

constexpr int tagsMajor = 2;
constexpr int tagsMinor = 1;

zelFormat* formatOf(zelDatabase* entry, int openDSOifNecessary) {
    return entry == nullptr ? nullptr : entry->getFormat(openDSOifNecessary);
}

} // namespace

zelFormat* zelFormat::findByMagic(int fd, int openDSOifNecessary) {
    return formatOf(zelDatabase::findByMagic(fd), openDSOifNecessary);
}

zelFormat* zelFormat::findByFormatName(const char* formatName, int openDSOifNecessary) {
    return formatOf(zelDatabase::findByFormatName(formatName), openDSOifNecessary);
}

zelFormat* zelFormat::findByFileName(const char* fileName, int noMatchRule,
                                     int openDSOifNecessary) {
    return formatOf(zelDatabase::findByFileName(fileName, noMatchRule), openDSOifNecessary);
}

zelFormat* zelFormat::findNext(int& index, int openDSOifNecessary) {
    while (zelDatabase* entry = zelDatabase::findNext(index)) {
        if (zelFormat* format = entry->getFormat(openDSOifNecessary)) {
            return format;
        }
    }
    return nullptr;
}

// `name` is not freed when a format object goes: a client's own static objects may still ask for it
// after the plug-in's have been destroyed.
zelFormat::zelFormat(const char* formatName)
    : name(nullptr), db(zelDatabase::findByFormatName(formatName)) {
    if (db == nullptr) {
        zelError(zelSevError, "Format %s not in ZEL database",
                 formatName == nullptr ? "(null)" : formatName);
        return;
    }
    static_cast<zelFormatDB*>(db)->setFormat(this);
    name = zel::registry::copyText(formatName);
}

zelFormat::zelFormat(const char* formatName, int major, int minor) : zelFormat(formatName) {
    if (db != nullptr) {
        static_cast<zelFormatDB*>(db)->setFormat(this, major, minor);
    }
}

const char* zelFormat::getName() const {
    return name;
}

const char* zelFormat::getDefaultSuffix() const {
    return db == nullptr ? nullptr : db->getDefaultSuffix();
}

const char* zelFormat::getDescription() const {
    return db == nullptr ? nullptr : db->getDescription();
}

int zelFormat::accessModeIsSupported(int mode) const {
    return db != nullptr && db->accessModeIsSupported(mode);
}

int zelFormat::haveDSOVersion(int wantMajor, int wantMinor) const {
    return db != nullptr && static_cast<zelFormatDB*>(db)->haveDSOVersion(wantMajor, wantMinor);
}

zelTagDescription* zelFormat::getTagDescriptions(int& count) {
    if (haveDSOVersion(tagsMajor, tagsMinor)) {
        return _getTagDescriptions(count);
    }
    count = 0;
    return nullptr;
}

zelFile* zelFormat::newfileobj() {
    return nullptr;
}

zelTagDescription* zelFormat::_getTagDescriptions(int& count) {
    count = 0;
    return nullptr;
}

zelReadOnlyFormat::zelReadOnlyFormat(const char* formatName) : zelFormat(formatName) {}

zelReadOnlyFormat::zelReadOnlyFormat(const char* formatName, int major, int minor)
    : zelFormat(formatName, major, minor) {}

int zelReadOnlyFormat::typeIsSupported(zelDataType) {
    return 0;
}

int zelReadOnlyFormat::orderIsSupported(zelOrder) {
    return 0;
}

int zelReadOnlyFormat::orientationIsSupported(zelOrientation) {
    return 0;
}

int zelReadOnlyFormat::colorModelIsSupported(zelColorModel) {
    return 0;
}

int zelReadOnlyFormat::compressionIsSupported(zelCompression) {
    return 0;
}

int zelReadOnlyFormat::sizeIsSupported(int, int, int, int, zelOrientation) {
    return 0;
}

int zelReadOnlyFormat::pagingIsSupported() {
    return 0;
}

int zelReadOnlyFormat::pageSizeIsSupported(int, int, int, int, int, int, int, int, zelOrientation) {
    return 0;
}

int zelReadOnlyFormat::randomAccessReadIsSupported() {
    return 0;
}

int zelReadOnlyFormat::randomAccessWriteIsSupported() {
    return 0;
}

zelDataType zelReadOnlyFormat::getPreferredType() {
    return zelDataType{};
}

zelOrder zelReadOnlyFormat::getPreferredOrder() {
    return zelOrder{};
}

zelOrientation zelReadOnlyFormat::getPreferredOrientation() {
    return zelOrientation{};
}

zelColorModel zelReadOnlyFormat::getPreferredColorModel(int) {
    return zelColorModel{};
}

zelCompression zelReadOnlyFormat::getPreferredCompression() {
    return zelCompression{};
}

void zelReadOnlyFormat::getPreferredPageSize(int, int, int, int, int&, int&, int&, int&,
                                             zelOrientation) {}
