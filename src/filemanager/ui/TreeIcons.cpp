#include "filemanager/ui/TreeIcons.h"

#include "filemanager/TreeKey.h"
#include "filemanager/TreeNode.h"
#include "platform/DriveMap.h"
#include "platform/SpecialFolders.h"

#include <QDir>
#include <QFileInfo>
#include <QMimeType>

namespace vmk
{

TreeIcons& TreeIcons::instance()
{
    static TreeIcons icons;
    return icons;
}

TreeIcons::TreeIcons()
{
    // Without a desktop session (a bare X server) only the bare "hicolor" theme is
    // named, which holds no file-type pictures; the default desktop theme, when
    // installed, stands in for the missing ones.
    if (!QIcon::hasThemeIcon(QStringLiteral("text-x-generic"))
        && QDir(QStringLiteral("/usr/share/icons/Adwaita")).exists())
        QIcon::setThemeName(QStringLiteral("Adwaita"));
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
    // The list holds 16-pixel pictures, drawn once, as the tree's image list does:
    // a theme icon kept as such is looked up again by the theme at each paint.
    const QIcon found = QIcon(lookUp(imageKey, kind, logicalPath).pixmap(QSize(16, 16)));
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
    // The type's own picture, else its family's (many themes carry only "image-x-generic"
    // and the like), else what the provider gives for the file.
    const QString native = DriveMap::instance().toNative(logicalPath);
    const QMimeType type = m_types.mimeTypeForFile(native);
    for (const QString& name : { type.iconName(), type.genericIconName() }) {
        if (QIcon::hasThemeIcon(name))
            return QIcon::fromTheme(name);
    }
    const QIcon typed = m_provider.icon(QFileInfo(native));
    return typed.isNull() ? m_provider.icon(QFileIconProvider::File) : typed;
}

} // namespace vmk
