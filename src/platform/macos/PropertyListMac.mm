#include "platform/PropertyListCodec.h"

#import <Foundation/Foundation.h>

#include <QDateTime>
#include <QTimeZone>
#include <cstring>

namespace tw {

namespace {

// Foundation's objects as the Qt values the shared code expects, one for one.
std::optional<QVariant> toVariant(id object, int depth, int maximumDepth)
{
    if (!object || depth > maximumDepth)
        return std::nullopt;
    if ([object isKindOfClass:NSString.class])
        return QVariant(QString::fromNSString(object));
    if ([object isKindOfClass:NSData.class])
        return QVariant(QByteArray::fromNSData(object));
    if ([object isKindOfClass:NSDate.class])
        return QVariant(QDateTime::fromNSDate(object).toTimeZone(QTimeZone::utc()));
    if ([object isKindOfClass:NSNumber.class]) {
        NSNumber* number = object;
        if (CFGetTypeID((__bridge CFTypeRef)number) == CFBooleanGetTypeID())
            return QVariant(bool(number.boolValue));
        if (CFNumberIsFloatType((__bridge CFNumberRef)number))
            return QVariant(number.doubleValue);
        // Integers above qint64's range keep their bits, as libplist gives them.
        if (std::strcmp(number.objCType, @encode(unsigned long long)) == 0)
            return QVariant(qint64(number.unsignedLongLongValue));
        return QVariant(qint64(number.longLongValue));
    }
    if ([object isKindOfClass:NSArray.class]) {
        QVariantList list;
        for (id item in (NSArray*)object) {
            std::optional<QVariant> value = toVariant(item, depth + 1, maximumDepth);
            if (!value)
                return std::nullopt;
            list.append(std::move(*value));
        }
        return QVariant(list);
    }
    if ([object isKindOfClass:NSDictionary.class]) {
        NSDictionary* dictionary = object;
        QVariantMap map;
        for (id key in dictionary) {
            if (![key isKindOfClass:NSString.class])
                return std::nullopt;
            std::optional<QVariant> value = toVariant(dictionary[key], depth + 1, maximumDepth);
            if (!value)
                return std::nullopt;
            map.insert(QString::fromNSString(key), std::move(*value));
        }
        return QVariant(map);
    }
    return std::nullopt;
}

id toObject(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return [NSNumber numberWithBool:value.toBool()];
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return [NSNumber numberWithLongLong:value.toLongLong()];
    case QMetaType::Double:
        return [NSNumber numberWithDouble:value.toDouble()];
    case QMetaType::QString:
        return value.toString().toNSString();
    case QMetaType::QByteArray:
        return value.toByteArray().toNSData();
    case QMetaType::QVariantList: {
        NSMutableArray* array = [NSMutableArray arrayWithCapacity:NSUInteger(value.toList().size())];
        for (const QVariant& item : value.toList()) {
            id child = toObject(item);
            if (!child)
                return nil;
            [array addObject:child];
        }
        return array;
    }
    case QMetaType::QVariantMap: {
        NSMutableDictionary* dictionary = [NSMutableDictionary dictionary];
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            id child = toObject(it.value());
            if (!child)
                return nil;
            [dictionary setObject:child forKey:it.key().toNSString()];
        }
        return dictionary;
    }
    default:
        return nil;
    }
}

} // namespace

std::optional<QVariant> decodePropertyList(const QByteArray& data, int maximumDepth)
{
    @autoreleasepool {
        NSError* error = nil;
        id root = [NSPropertyListSerialization propertyListWithData:data.toRawNSData()
                                                           options:NSPropertyListImmutable
                                                            format:nullptr
                                                             error:&error];
        return toVariant(root, 0, maximumDepth);
    }
}

QByteArray encodePropertyList(const QVariant& value, bool binary)
{
    @autoreleasepool {
        id root = toObject(value);
        if (!root)
            return {};
        NSError* error = nil;
        NSData* data = [NSPropertyListSerialization
            dataWithPropertyList:root
                          format:binary ? NSPropertyListBinaryFormat_v1_0 : NSPropertyListXMLFormat_v1_0
                         options:0
                           error:&error];
        return data ? QByteArray::fromNSData(data) : QByteArray();
    }
}

} // namespace tw
