#include "platform/PropertyListCodec.h"

#include <QDateTime>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QTimeZone>
#include <cstdlib>
#include <limits>
#include <memory>
#include <plist/plist.h>

namespace tw {

namespace {
// Property-list dates count from 2001-01-01 UTC.
constexpr qint64 kAppleEpoch = 978307200;

struct PlistFree {
    void operator()(plist_t node) const { plist_free(node); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

std::optional<QVariant> convert(plist_t node, int depth, int maximumDepth)
{
    if (!node || depth > maximumDepth)
        return std::nullopt;
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        uint8_t value = 0;
        plist_get_bool_val(node, &value);
        return QVariant(value != 0);
    }
    case PLIST_UINT: {
        uint64_t value = 0;
        plist_get_uint_val(node, &value);
        // libplist keeps negative integers as their two's complement.
        return QVariant(qint64(value));
    }
    case PLIST_REAL: {
        double value = 0;
        plist_get_real_val(node, &value);
        return QVariant(value);
    }
    case PLIST_STRING: {
        uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        if (!text || length > uint64_t(std::numeric_limits<int>::max()))
            return std::nullopt;
        return QVariant(QString::fromUtf8(text, qsizetype(length)));
    }
    case PLIST_DATA: {
        uint64_t length = 0;
        const char* bytes = plist_get_data_ptr(node, &length);
        if (length > uint64_t(std::numeric_limits<int>::max()))
            return std::nullopt;
        return QVariant(QByteArray(bytes, qsizetype(length)));
    }
    case PLIST_DATE: {
        int32_t seconds = 0;
        int32_t micro = 0;
        plist_get_date_val(node, &seconds, &micro);
        return QVariant(QDateTime::fromSecsSinceEpoch(kAppleEpoch + seconds, QTimeZone::utc())
                            .addMSecs(micro / 1000));
    }
    case PLIST_ARRAY: {
        QVariantList list;
        const uint32_t count = plist_array_get_size(node);
        for (uint32_t i = 0; i < count; ++i) {
            std::optional<QVariant> item = convert(plist_array_get_item(node, i), depth + 1, maximumDepth);
            if (!item)
                return std::nullopt;
            list.append(std::move(*item));
        }
        return QVariant(list);
    }
    case PLIST_DICT: {
        QVariantMap map;
        plist_dict_iter iter = nullptr;
        plist_dict_new_iter(node, &iter);
        if (!iter)
            return QVariant(map);
        for (;;) {
            char* key = nullptr;
            plist_t value = nullptr;
            plist_dict_next_item(node, iter, &key, &value);
            if (!value) {
                std::free(key);
                break;
            }
            std::optional<QVariant> converted = convert(value, depth + 1, maximumDepth);
            const QString name = key ? QString::fromUtf8(key) : QString();
            std::free(key);
            if (!converted) {
                std::free(iter);
                return std::nullopt;
            }
            map.insert(name, std::move(*converted));
        }
        std::free(iter);
        return QVariant(map);
    }
    default:
        // Keys, UIDs (keyed archives) and anything newer have no value here.
        return std::nullopt;
    }
}

plist_t build(const QVariant& value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::LongLong:
    case QMetaType::UInt:
    case QMetaType::ULongLong:
        return plist_new_uint(uint64_t(value.toLongLong()));
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QString: {
        const QByteArray text = value.toString().toUtf8();
        return plist_new_string(text.constData());
    }
    case QMetaType::QByteArray: {
        const QByteArray data = value.toByteArray();
        return plist_new_data(data.constData(), uint64_t(data.size()));
    }
    case QMetaType::QVariantList: {
        plist_t array = plist_new_array();
        for (const QVariant& item : value.toList()) {
            plist_t child = build(item);
            if (!child) {
                plist_free(array);
                return nullptr;
            }
            plist_array_append_item(array, child);
        }
        return array;
    }
    case QMetaType::QVariantMap: {
        plist_t dict = plist_new_dict();
        const QVariantMap map = value.toMap();
        for (auto it = map.cbegin(); it != map.cend(); ++it) {
            plist_t child = build(it.value());
            if (!child) {
                plist_free(dict);
                return nullptr;
            }
            plist_dict_set_item(dict, it.key().toUtf8().constData(), child);
        }
        return dict;
    }
    default:
        return nullptr;
    }
}
// XML lists as Macs write them, made into the plain UTF-8 libplist reads:
// a UTF-8 byte-order mark dropped, UTF-16 (either order, with or without a
// mark) converted, its declaration saying so. Empty when UTF-16 is broken.
std::optional<QByteArray> asUtf8Text(const QByteArray& data)
{
    if (data.startsWith("\xEF\xBB\xBF"))
        return data.mid(3);
    std::optional<QStringDecoder::Encoding> utf16;
    if (data.startsWith("\xFF\xFE") || data.startsWith(QByteArray("<\0?\0", 4)))
        utf16 = QStringDecoder::Utf16LE;
    else if (data.startsWith("\xFE\xFF") || data.startsWith(QByteArray("\0<\0?", 4)))
        utf16 = QStringDecoder::Utf16BE;
    if (!utf16)
        return data;
    QStringDecoder decode(*utf16, QStringDecoder::Flag::Stateless);
    QString text = decode(data);
    if (decode.hasError())
        return std::nullopt;
    if (text.startsWith(QChar(0xFEFF)))
        text.remove(0, 1);
    const qsizetype declarationEnd = text.startsWith(QLatin1String("<?xml")) ? text.indexOf(QLatin1String("?>")) : -1;
    if (declarationEnd > 0) {
        static const QRegularExpression encoding(QStringLiteral("encoding=[\"']UTF-16[\"']"),
                                                 QRegularExpression::CaseInsensitiveOption);
        QString declaration = text.left(declarationEnd);
        declaration.replace(encoding, QStringLiteral("encoding=\"UTF-8\""));
        text.replace(0, declarationEnd, declaration);
    }
    return text.toUtf8();
}
} // namespace

std::optional<QVariant> decodePropertyList(const QByteArray& given, int maximumDepth)
{
    const std::optional<QByteArray> text = asUtf8Text(given);
    if (!text || text->isEmpty())
        return std::nullopt;
    const QByteArray& data = *text;
    plist_t root = nullptr;
    plist_from_memory(data.constData(), uint32_t(data.size()), &root);
    PlistPtr owner(root);
    if (root && plist_is_binary(data.constData(), uint32_t(data.size()))) {
        // libplist's binary reader can build a dictionary whose keys are not
        // keys, and walking such a dictionary aborts inside libplist. Its XML
        // reader checks what it builds, so a binary list goes through XML once.
        char* xml = nullptr;
        uint32_t length = 0;
        plist_to_xml(root, &xml, &length);
        owner.reset();
        root = nullptr;
        if (xml)
            plist_from_xml(xml, length, &root);
        plist_to_xml_free(xml);
        owner.reset(root);
    }
    return convert(root, 0, maximumDepth);
}

QByteArray encodePropertyList(const QVariant& value, bool binary)
{
    const PlistPtr root(build(value));
    if (!root)
        return {};
    char* out = nullptr;
    uint32_t length = 0;
    if (binary)
        plist_to_bin(root.get(), &out, &length);
    else
        plist_to_xml(root.get(), &out, &length);
    QByteArray result(out, qsizetype(length));
    if (binary)
        plist_to_bin_free(out);
    else
        plist_to_xml_free(out);
    return result;
}

} // namespace tw
