#include "ui/common/UiState.h"

#include "base/Error.h"
#include "base/Files.h"
#include "base/Xml.h"
#include "config/Program.h"

#include <QHeaderView>
#include <QScreen>
#include <QSplitter>
#include <QStyle>
#include <QWidget>

namespace {

constexpr auto group = "VTRGRAPHER";
constexpr int border = 4; ///< pixels that frames commonly have beside and below a window

QString layoutFile()
{
    return program().gGraphDataPath + QLatin1String("UISTATE.XML");
}

void readLayouts(pugi::xml_document &document)
{
    try {
        if (fileExists(layoutFile()))
            parseXml(document, readFile(layoutFile()));
    } catch (const Error &) {
        document.reset(); // windows open in their default layout
    }
}

pugi::xml_node childOf(pugi::xml_node parent, const char *name)
{
    const pugi::xml_node found = parent.child(name);
    return found ? found : parent.append_child(name);
}

pugi::xml_node named(const pugi::xml_node &parent, const char *element, const QString &name)
{
    return parent.find_child_by_attribute(element, "Name", name.toUtf8().constData());
}

QByteArray bytesOf(const pugi::xml_node &element, const char *attribute)
{
    return QByteArray::fromBase64(GetAttr(element, attribute, {}).toLatin1());
}

void setBytes(pugi::xml_node element, const char *attribute, const QByteArray &bytes)
{
    setAttr(element, attribute, QString::fromLatin1(bytes.toBase64()));
}

/// Calls `visit(name, part)` for the header views and splitters of a window that have a name, not
/// one of Qt's own.
template <typename Visit>
void visitParts(const QWidget *window, Visit visit)
{
    const auto visitNamed = [&visit](const QString &name, auto &part) {
        if (!name.isEmpty() && !name.startsWith(QLatin1String("qt_")))
            visit(name, part);
    };
    for (auto *header : window->findChildren<QHeaderView *>()) {
        if (header->orientation() == Qt::Horizontal)
            visitNamed(header->parentWidget()->objectName(), *header);
    }
    for (auto *splitter : window->findChildren<QSplitter *>())
        visitNamed(splitter->objectName(), *splitter);
}

/// Limits a window that is not shown yet to its screen; its frame is unknown until it is shown.
void fitToScreen(QWidget *window)
{
    const QStyle *style = window->style();
    const int title = style->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, window);
    const QSize room = window->screen()
                           ->availableGeometry()
                           .adjusted(border, title + border, -border, -border)
                           .size();
    QSize size = window->testAttribute(Qt::WA_Resized) ? window->size() : window->sizeHint();
    if (size.height() > room.height()) // it gets a scroll bar
        size.rwidth() += style->pixelMetric(QStyle::PM_ScrollBarExtent, nullptr, window);
    window->resize(size.boundedTo(room));
}

} // namespace

bool restoreWindowState(QWidget *window)
{
    fitToScreen(window);
    pugi::xml_document document;
    readLayouts(document);
    const pugi::xml_node element =
        named(document.document_element().child(group), "WINDOW", window->objectName());
    if (!element)
        return false;
    window->restoreGeometry(bytesOf(element, "Geometry"));
    visitParts(window, [&element](const QString &name, auto &part) {
        part.restoreState(bytesOf(named(element, "PART", name), "State"));
    });
    return true;
}

void saveWindowState(QWidget *window)
{
    if (program().gGraphDataPath.isEmpty())
        return; // start-up is not finished
    pugi::xml_document document;
    readLayouts(document);
    pugi::xml_node root = childOf(document, "UISTATE");
    pugi::xml_node windows = childOf(root, group);
    windows.remove_child(named(windows, "WINDOW", window->objectName()));
    pugi::xml_node element = windows.append_child("WINDOW");
    setAttr(element, "Name", window->objectName());
    setBytes(element, "Geometry", window->saveGeometry());
    visitParts(window, [&element](const QString &name, const auto &part) {
        pugi::xml_node kept = element.append_child("PART");
        setAttr(kept, "Name", name);
        setBytes(kept, "State", part.saveState());
    });
    try {
        saveFile(layoutFile(), documentBytes(document));
    } catch (const Error &) {
        // A layout is not worth a message; windows open in their default one.
    }
}
