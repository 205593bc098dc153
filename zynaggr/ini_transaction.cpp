// SPDX-License-Identifier: MIT
#include "zynaggr/ini_transaction.h"

#include "zynaggr/ini_document_impl.h"
#include "zynaggr/ini_index_impl.h"
#include "zynaggr/zyn_translate.h"
#include "zynplatform/cp1251.h"
#include "zynplatform/savelock.h"
#include "zynplatform/syserror.h"

using namespace zynplatform::literals;

CzynINITransaction::CzynINITransaction(CzynINI& ini, unsigned limitMs)
    : m_ini(ini),
      m_lock(&ini.m_CS),
      m_pTurn(std::make_unique<zynplatform::SaveLock>()),
      m_sIniName(ini.m_sIniName) {
    if (m_ini.m_bInTransaction || !m_ini.m_bWriteMode) {
        m_ini.m_sErr = CzynTranslate::Translate(
            "Транзакция ini невозможна: изменения этого объекта уже накапливаются"_cp1251);
        return;
    }
    if (const std::uint32_t error = m_pTurn->Take(m_sIniName, limitMs, true)) {
        m_ini.m_sErr = CzynTranslate::Translate("Ошибка при открытии файла: "_cp1251);
        m_ini.m_sErr += zynplatform::DescribeSystemError(error);
        return;
    }
    m_ini.SetNeedReload();
    if (!m_ini.Parse()) {
        m_pTurn->Release();
        return;
    }
    m_bBegun = m_ini.m_bInTransaction = true;
    m_ini.m_bWriteMode = false;
}

CzynINITransaction::~CzynINITransaction() {
    if (!m_bBegun) return;
    End();
    m_ini.m_pIndex.reset();
    m_ini.m_aSections.RemoveAll();
    m_ini.m_pDocument.reset();
    m_ini.SetNeedReload();
}

bool CzynINITransaction::Commit() {
    if (!m_bBegun) return false;
    if (m_ini.m_sIniName != m_sIniName)
        return m_ini.FailSave(
            CzynTranslate::Translate("Транзакция ini невозможна: объект указывает на другой файл"_cp1251));
    m_ini.m_bInTransaction = false;
    m_ini.m_pSaveLock = m_pTurn.get();
    const bool isSaved = m_ini.InternalSave();
    m_ini.m_pSaveLock = nullptr;
    m_ini.m_bInTransaction = true;
    if (isSaved) End();
    return isSaved;
}

void CzynINITransaction::End() {
    m_pTurn->Release();
    m_ini.m_bInTransaction = false;
    m_ini.m_pSaveLock = nullptr;
    m_ini.m_bWriteMode = true;
    m_bBegun = false;
}
