#include "definitions/clsGraphValueItem.h"

#include "base/Xml.h"

QString clsGraphValueItem::XMLData() const
{
    pugi::xml_document document;
    pugi::xml_node element = document.append_child("gValue");
    setAttr(element, "Scale", ItemScale);
    setAttr(element, "Name", ItemName);
    setAttr(element, "Value", ItemValue);
    setAttr(element, "Desc", ItemDesc);
    setAttr(element, "State", ItemState);
    setAttr(element, "IsGlobal", xmlBoolean(ItemIsGlobal));
    return elementText(element);
}

void clsGraphValueItem::SetXMLData(const QString &text)
{
    if (!text.contains(QLatin1String("<gValue"), Qt::CaseInsensitive))
        return;
    pugi::xml_document document;
    parseXml(document, text);
    const pugi::xml_node element = document.document_element();
    ItemScale = integerAttr(element, "Scale", 0);
    ItemState = integerAttr(element, "State", 0);
    ItemName = GetAttr(element, "Name", QStringLiteral("UnNamed Value"));
    ItemValue = GetAttr(element, "Value", QStringLiteral("0"));
    ItemDesc = GetAttr(element, "Desc", QStringLiteral("No Description"));
    ItemIsGlobal = xmlBoolean(GetAttr(element, "IsGlobal", QStringLiteral("0")));
}
