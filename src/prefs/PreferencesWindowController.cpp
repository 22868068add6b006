// SPDX-License-Identifier: GPL-3.0-or-later
#include "prefs/PreferencesWindowController.h"

#include "prefs/PreferenceStore.h"
#include "ui_PreferencesWindowController.h"

#include <QSignalBlocker>

namespace {
// What each slider position stores, for the labels under the sliders.
QString intervalText(int position)
{
    const qint64 seconds = position < 3 ? position : 5 * position - 10;
    return seconds == 1 ? QObject::tr("1 second") : QObject::tr("%1 seconds").arg(seconds);
}

QString topText(int position)
{
    return position == 5 ? QObject::tr("All networks") : QObject::tr("Top %1").arg(5 * position);
}
} // namespace

PreferencesWindowController::PreferencesWindowController(PreferenceStore *store, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::PreferencesWindowController>()), m_store(store)
{
    ui->setupUi(this);
    // Position 0 of the interval would store 0 seconds: not offered.
    ui->updateIntervalSlider->setRange(1, 5);
    ui->numberOfTopNetworksSlider->setRange(1, 5);
    connect(ui->updateIntervalSlider, &QSlider::valueChanged, this, [this](int position) {
        setUpdateInterval(position);
        updateLabels();
    });
    connect(ui->numberOfTopNetworksSlider, &QSlider::valueChanged, this, [this](int position) {
        setNumberOfTopNetworks(quint64(position));
        updateLabels();
    });
    syncFromStore();
}

PreferencesWindowController::~PreferencesWindowController() = default;

qint64 PreferencesWindowController::updateInterval() const
{
    return m_store->updateInterval();
}

void PreferencesWindowController::setUpdateInterval(qint64 position)
{
    m_store->setUpdateInterval(position);
}

quint64 PreferencesWindowController::numberOfTopNetworks() const
{
    return m_store->numberOfTopNetworks();
}

void PreferencesWindowController::setNumberOfTopNetworks(quint64 position)
{
    m_store->setNumberOfTopNetworks(position);
}

qint64 PreferencesWindowController::updateIntervalValue() const
{
    return m_store->updateIntervalValue();
}

quint64 PreferencesWindowController::numberOfTopNetworksValue() const
{
    return m_store->numberOfTopNetworksValue();
}

void PreferencesWindowController::syncFromStore()
{
    const QSignalBlocker b1(ui->updateIntervalSlider);
    const QSignalBlocker b2(ui->numberOfTopNetworksSlider);
    // Positions the read mapping yields outside the slider's range show at its ends.
    ui->updateIntervalSlider->setValue(int(qBound(qint64(1), updateInterval(), qint64(5))));
    ui->numberOfTopNetworksSlider->setValue(
        int(qBound(quint64(1), numberOfTopNetworks(), quint64(5))));
    updateLabels();
}

void PreferencesWindowController::showEvent(QShowEvent *event)
{
    syncFromStore();
    QDialog::showEvent(event);
}

void PreferencesWindowController::updateLabels()
{
    ui->updateIntervalValueLabel->setText(intervalText(ui->updateIntervalSlider->value()));
    ui->numberOfTopNetworksValueLabel->setText(topText(ui->numberOfTopNetworksSlider->value()));
}
