// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/recordset.h"

#include "database/recordset_impl.h"

namespace tarnwick::jet {

Recordset::Recordset() : impl_(std::make_unique<Impl>()) {}

Recordset::~Recordset() = default;
Recordset::Recordset(Recordset&&) noexcept = default;
Recordset& Recordset::operator=(Recordset&&) noexcept = default;

void Recordset::Open(std::string_view source, Connection& connection, CursorType, LockType lock,
                     CommandType command) {
  impl_->Open(source, connection, lock, command);
}

void Recordset::Close() {
  impl_->Close();
}

bool Recordset::IsOpen() const {
  return impl_->IsOpen();
}

void Recordset::Requery() {
  impl_->RequireOpen();
  impl_->Requery();
}

bool Recordset::Eof() {
  return impl_->Eof();
}

bool Recordset::Bof() {
  return impl_->Bof();
}

int64_t Recordset::RecordCount() {
  impl_->RequireOpen();
  return impl_->Count();
}

void Recordset::MoveFirst() {
  impl_->MoveFirst();
}

void Recordset::MoveLast() {
  impl_->MoveLast();
}

void Recordset::MoveNext() {
  impl_->MoveNext();
}

void Recordset::MovePrevious() {
  impl_->MovePrevious();
}

int64_t Recordset::AbsolutePosition() {
  return impl_->Position();
}

void Recordset::SetAbsolutePosition(int64_t position) {
  impl_->SetPosition(position);
}

int64_t Recordset::PositionOfKey(int64_t key) {
  return impl_->PositionOfKey(key);
}

std::vector<int64_t> Recordset::Keys() {
  return impl_->Keys();
}

void Recordset::EachKey(const std::function<void(int64_t key)>& use) {
  impl_->EachKey(use);
}

void Recordset::Arrange(const std::vector<uint32_t>& places) {
  impl_->Arrange(places);
}

void Recordset::Hold(const std::vector<int64_t>& keys) {
  impl_->Hold(keys);
}

void Recordset::HoldMore(const std::vector<int64_t>& keys) {
  impl_->HoldMore(keys);
}

void Recordset::Find(std::string_view criteria) {
  impl_->Find(criteria);
}

int Recordset::FieldCount() {
  return impl_->FieldCount();
}

std::string Recordset::FieldName(int index) {
  return impl_->FieldName(index);
}

bool Recordset::HasField(std::string_view name) {
  return impl_->HasField(name);
}

Value Recordset::Field(std::string_view name) {
  return impl_->Field(name);
}

Value Recordset::Field(int index) {
  return impl_->Field(index);
}

void Recordset::AddNew() {
  impl_->AddNew();
}

void Recordset::SetField(std::string_view name, Value value) {
  impl_->SetField(name, std::move(value));
}

void Recordset::SetPacked(std::string_view name, Value value, std::string packed) {
  impl_->SetPacked(name, std::move(value), std::move(packed));
}

void Recordset::SetTrigrams(std::vector<uint32_t> trigrams) {
  impl_->SetTrigrams(std::move(trigrams));
}

void Recordset::Update() {
  impl_->Update();
}

void Recordset::CancelUpdate() {
  impl_->CancelUpdate();
}

void Recordset::Delete() {
  impl_->Delete();
}

}  // namespace tarnwick::jet
