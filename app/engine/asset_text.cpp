#include "engine/asset_text.h"

#include "base/printable.h"

QString shownText(const QByteArray &text)
{
    return QString::fromUtf8(printable(text));
}

QString typeText(AssetType type)
{
    switch (type) {
    case AssetType::Burst:
        return QStringLiteral("burst");
    case AssetType::Live:
        return QStringLiteral("Live Photo");
    case AssetType::Panorama:
        return QStringLiteral("panorama");
    case AssetType::Screenshot:
        return QStringLiteral("screenshot");
    case AssetType::SlowMotion:
        return QStringLiteral("slow motion");
    case AssetType::TimeLapse:
        return QStringLiteral("time lapse");
    case AssetType::ScreenRecording:
        return QStringLiteral("screen recording");
    }
    return QString();
}

QStringList typeTexts(AssetTypes types)
{
    QStringList texts;
    for (const AssetType type :
         {AssetType::Burst, AssetType::Live, AssetType::Panorama, AssetType::ScreenRecording,
          AssetType::Screenshot, AssetType::SlowMotion, AssetType::TimeLapse}) {
        if (types.testFlag(type))
            texts.append(typeText(type));
    }
    return texts;
}

QString sourceText(AssetSource source)
{
    switch (source) {
    case AssetSource::Local:
        return QStringLiteral("this device");
    case AssetSource::Cloud:
        return QStringLiteral("iCloud");
    case AssetSource::Referenced:
        return QStringLiteral("referenced file");
    case AssetSource::Messages:
        return QStringLiteral("Messages");
    case AssetSource::Shared:
        return QStringLiteral("shared album");
    case AssetSource::Other:
        return QStringLiteral("other");
    }
    return QString();
}
