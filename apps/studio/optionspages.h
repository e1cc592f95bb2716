#pragma once

// The pages of the options dialog. Each page holds the user's pending choices: load()
// shows what the host has, apply() writes them through the host, restoreDefaults() puts
// the documented values back on screen only (OK or Apply still has to write them).
#include <QColor>
#include <QList>
#include <QToolButton>
#include <QVariant>
#include <QWidget>

#include <functional>

class QFormLayout;
class StudioHost;

class OptionsPage : public QWidget
{
    Q_OBJECT
public:
    OptionsPage(StudioHost *host, const QString &title, QWidget *parent = nullptr);

    QString title() const { return m_title; }
    StudioHost *host() const { return m_host; }

    virtual void load() = 0;
    virtual void apply() = 0;
    virtual void restoreDefaults() = 0;
    virtual bool hasDefaults() const { return true; }

private:
    StudioHost *m_host;
    QString m_title;
};

// A button that shows a colour and asks for another one when clicked. An unset colour
// shows as an empty frame with "None".
class ColorButton : public QToolButton
{
    Q_OBJECT
public:
    explicit ColorButton(const QString &title, QWidget *parent = nullptr);

    QColor color() const { return m_color; }
    void setColor(const QColor &color);

signals:
    void colorChanged(const QColor &color);

private:
    void choose();

    QString m_title;
    QColor m_color;
};

// A page of single options laid out as a form: each field knows its option's name and
// default, and how to show and read its value.
class FieldsPage : public OptionsPage
{
    Q_OBJECT
public:
    struct Choice
    {
        QString text;
        int value;
    };

    FieldsPage(StudioHost *host, const QString &title, QWidget *parent = nullptr);

    void load() override;
    void apply() override;
    void restoreDefaults() override;

protected:
    QFormLayout *form() const { return m_form; }
    // The parent of the fields, inside the page's scroll area.
    QWidget *body() const { return m_body; }
    // Each widget gets the option's name as its object name, so that it can be found.
    QWidget *addCheck(const QString &name, const QString &text);
    QWidget *addCombo(const QString &name, const QString &label, const QList<Choice> &choices);
    QWidget *addSpin(const QString &name, const QString &label, int minimum, int maximum);
    QWidget *addDouble(const QString &name, const QString &label, double minimum, double maximum,
                       double step);
    QWidget *addColor(const QString &name, const QString &label);
    QWidget *addFile(const QString &name, const QString &label, const QString &filter);
    void addSection(const QString &text);

    struct Field
    {
        QString name;
        std::function<QVariant()> get;
        std::function<void(const QVariant &)> set;
    };
    void addField(const Field &field) { m_fields.append(field); }

private:
    QFormLayout *m_form;
    QWidget *m_body = nullptr;
    QList<Field> m_fields;
};

OptionsPage *createGeneralPage(StudioHost *host);
OptionsPage *createCodeEditorPage(StudioHost *host);
OptionsPage *createGraphicsPage(StudioHost *host);
OptionsPage *createColorsPage(StudioHost *host);
// The engine's page, or null without an engine.
OptionsPage *createEnginePage(StudioHost *host);
