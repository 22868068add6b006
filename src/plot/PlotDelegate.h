// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "model/NetworkList.h"
#include "wireless/CWInterface.h"

#include <QtGlobal>

// What the plots, the network map and the channel views ask of the application controller.
class PlotDelegate
{
public:
    virtual ~PlotDelegate() = default;
    virtual const NetworkList &networks() const = 0;
    virtual CWInterfaceRef currentInterface() const = 0; // may be null
    virtual qint64 numberOfDatas() const = 0;
    virtual qint64 numberOfTopNetworks() const = 0;
};
