#include "filemanager/ui/TreeIcons.h"

#include "filemanager/TreeKey.h"
#include "filemanager/TreeNode.h"
#include "platform/DriveMap.h"
#include "platform/SpecialFolders.h"

#include <QDir>
#include <QFileInfo>

namespace vmk
{

TreeIcons& TreeIcons::instance()
{
    static TreeIcons icons;
    return icons;
}

TreeIcons::TreeIcons()
{
    // Without a desktop session (a bare X server) no theme is named; the freedesktop
    // default theme, when installed, stands in for the missing pictures.
    if (QIcon::fallbackThemeName().isEmpty() && QDir(QStringLiteral("/usr/share/icons/Adwaita")).exists())
        QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

void TreeIcons::clear()
{
    m_cache.clear();
    m_lookups = 0;
}

QIcon TreeIcons::icon(const QString& imageKey, int kind, const QString& logicalPath)
{
    const auto it = m_cache.constFind(imageKey);
    if (it != m_cache.constEnd())
        return it.value();
    const QIcon found = lookUp(imageKey, kind, logicalPath);
    m_cache.insert(imageKey, found);
    return found;
}

QIcon TreeIcons::lookUp(const QString& imageKey, int kind, const QString& logicalPath)
{
    ++m_lookups;
    using Kind = TreeNode::Kind;
    switch (static_cast<Kind>(kind)) {
    case Kind::HostRoot:
        return QIcon::fromTheme(QStringLiteral("computer"), m_provider.icon(QFileIconProvider::Computer));
    case Kind::Memory:
        return QIcon::fromTheme(QStringLiteral("media-flash"), m_provider.icon(QFileIconProvider::Computer));
    case Kind::Drive:
        return QIcon::fromTheme(QStringLiteral("drive-harddisk"), m_provider.icon(QFileIconProvider::Drive));
    case Kind::DeviceRoot:
        return QIcon::fromTheme(QStringLiteral("drive-removable-media"), m_provider.icon(QFileIconProvider::Drive));
    case Kind::SpecialRoot: {
        const QString native = DriveMap::instance().toNative(logicalPath);
        const QString name
            = native == SpecialFolders::desktop() ? QStringLiteral("user-desktop") : QStringLiteral("folder-documents");
        return QIcon::fromTheme(name, m_provider.icon(QFileIconProvider::Folder));
    }
    case Kind::Folder:
        return QIcon::fromTheme(QStringLiteral("folder"), m_provider.icon(QFileIconProvider::Folder));
    case Kind::File:
        break;
    }
    Q_UNUSED(imageKey);
    const QIcon typed = m_provider.icon(QFileInfo(DriveMap::instance().toNative(logicalPath)));
    return typed.isNull() ? m_provider.icon(QFileIconProvider::File) : typed;
}

} // namespace vmk
