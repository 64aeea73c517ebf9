#include "forms/address_form.h"

#include "automation/conversion.h"
#include "database/connection.h"
#include "forms/lookup_list.h"
#include "forms/markup.h"
#include "runtime/concat.h"
#include "runtime/config.h"
#include "runtime/database_helpers.h"
#include "runtime/html_encode.h"
#include "runtime/text_helpers.h"
#include "runtime/web_text.h"

namespace vellum250::forms {

namespace {

constexpr int16_t kCountryListBit = 1024;
constexpr int16_t kCommentsBit = 2048;

struct Label {
  TextView key;
  TextView defaultText;
};

// A field with one text input.
struct TextField {
  int16_t bit;  // 0: always shown, always mandatory
  TextView AddressForm::*value;
  TextView opening;  // up to the value
  Label label;
  TextView validatorId;
  Label validatorLabel;  // without a key it is the row's
  // What stands for the field when it is not shown; nothing when `hiddenOpening` is empty.
  TextView hiddenOpening;
  TextView AddressForm::*hiddenValue;
};

// The order of the rows.
// clang-format off
constexpr TextField kTextFields[] = {
    {4, &AddressForm::displayName,
     u"<input class=\"AnswerText\" type=\"text\" id=\"DisplayName\" name=\"DisplayName\" "
     u"maxlength=40 size=40 value=\"",
     // Sites keep two texts: only the row's key has a blank.
     {u"Display Name", u"Display Name:"}, u"DisplayName", {u"DisplayName", u"Display Name:"},
     u"<input type=\"hidden\" id=\"DisplayName\" name=\"DisplayName\" value=\"",
     &AddressForm::displayName},
    {8, &AddressForm::differentiator,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Differentiator\" "
     u"name=\"Differentiator\" maxlength=40 size=40 value=\"",
     {u"Differentiator", u"Differentiator:"}, u"Differentiator", {},
     u"<input type=\"hidden\" id=\"Differentiator\" name=\"Differentiator\" value=\"",
     &AddressForm::differentiator},
    {0, &AddressForm::address1,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Add1\" name=\"Add1\" maxlength=40 "
     u"size=40 value=\"",
     {u"Address1", u"Address:"}, u"Add1", {},
     {}, nullptr},
    {16, &AddressForm::address2,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Add2\" name=\"Add2\" maxlength=40 "
     u"size=40 value=\"",
     {u"Address2", u""}, u"Add2", {},
     u"<input type=\"hidden\" id=\"Add2\" name=\"Add2\" value=\"",
     &AddressForm::address2},
    {32, &AddressForm::address3,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Add3\" name=\"Add3\" maxlength=40 "
     u"size=40 value=\"",
     {u"Address3", u""}, u"Add3", {},
     // Callers rely on line 2 standing here too.
     u"<input type=\"hidden\" id=\"Add3\" name=\"Add3\" value=\"",
     &AddressForm::address2},
    {64, &AddressForm::town,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Town\" name=\"Town\" maxlength=40 "
     u"size=40 value=\"",
     {u"Town", u""}, u"Town", {},
     {}, nullptr},
    {128, &AddressForm::county,
     u"<input class=\"AnswerText\" type=\"text\" id=\"County\" name=\"County\" "
     u"maxlength=40 size=40 value=\"",
     {u"County", u""}, u"County", {},
     {}, nullptr},
    {512, &AddressForm::postcode,
     // Pages read the name, whose case differs from that of the id.
     u"<input class=\"AnswerMoney\" type=\"text\" id=\"PostCode\" name=\"Postcode\" "
     u"maxlength=15 size=40 value=\"",
     {u"PostCode", u""}, u"Postcode", {},
     {}, nullptr},
    {256, &AddressForm::country,
     u"<input class=\"AnswerText\" type=\"text\" id=\"Country\" name=\"Country\" "
     u"maxlength=40 size=40 value=\"",
     {u"Country", u""}, u"Country", {},
     {}, nullptr},
};
// clang-format on

constexpr TextView kTextInputEnd = kJoined<kInputEnd, kInputCellEnd>;
constexpr TextView kReadOnlyTextInputEnd = kJoined<kReadOnlyInputEnd, kInputCellEnd>;

constexpr TextView kNineBlanks = u"         ";
constexpr TextView kTypeRow =
    kJoined<kRowStart, kCellStart, kNineBlanks, kMandatory, kCellEnd, kCellStart>;
constexpr TextView kMainRow = kJoined<kRowStart, kCellStart, kNineBlanks, kCellEnd, kCellStart>;

constexpr TextView kFindAddressButton =
    u"<div align=center><input class=\"AnswerButton\" id=\"PafButton\" name=\"PafButton\" "
    u"value=\"Find Address\" type=\"Button\" onclick=\"javascript: openPafWindow(this);\"></div>";

// Labels of what has no text input.
constexpr Label kPafText = {
    u"PAFText",
    u"Please enter the house number into address line 1 and the postcode and click 'find "
    u"address'."};
constexpr Label kPafButton = {u"PAFButton", kFindAddressButton};
constexpr Label kCountry = {u"Country", u"Country"};
constexpr Label kNoCountry = {u"NoCountryList", u"[Not Specified]"};
constexpr Label kAddressType = {u"LocType", u"Location Type"};
constexpr Label kMainLocation = {u"MainLocation", u"Main Location:"};
constexpr Label kComments = {u"LocationComments", u"Comments:"};

constexpr TextView kPafScriptFile =
    u"<script src=\"../common/paf.js\" language=\"JavaScript\" type=\"text/javascript\"></script>";
constexpr TextView kPafScriptToPrefix =
    u"<script onerror=\"null\" language=\"JavaScript\">\r\n"
    u"        prefix = '";
constexpr TextView kPafScriptFromPrefix =
    u"';\r\n"
    u"       //get the form object\r\n"
    u"        myForm=getFormName(prefix);\r\n"
    u"        //prepare the address information\r\n"
    u"        prepareAddressForPaf('', myForm);\r\n"
    u"       //setAddressValuesForPaf(prefix, myForm, '', '', '13 The Road', '', '', 'Surbiton', "
    u"'Surrey', 'KT1 2NU', 'Germany');\r\n"
    u"       //clearAddressForPaf(prefix, myForm);\r\n"
    u"</script>\r\n";

constexpr TextView kDefaultCountrySql =
    u"SELECT l.lookup_ref AS lr FROM lookup l, lookup_type lt WHERE l.lookup_type_ref = "
    u"lt.lookup_type_ref AND lt.lookup_type_code = 'CTRY' AND l.lookup_code = 'UK'";
constexpr TextView kCountriesSql =
    u"SELECT isNull(l.lookup_full_desc, '') AS lfd, l.lookup_ref AS lr FROM lookup l, lookup_type "
    u"lt WHERE l.lookup_type_ref = lt.lookup_type_ref AND lt.lookup_type_code = 'CTRY' AND "
    u"(l.valid_to is null OR l.valid_to > getdate()) ORDER BY l.lookup_full_desc";

// Writes the form from top to bottom into one text.
class AddressFormWriter {
 public:
  AddressFormWriter(CallReport report, const AddressForm& form) : report_(report), form_(form) {
    // A form with every field and label is some 5000 characters.
    out_.reserve(6144);
  }

  Text Write(bool& includePafScript) {
    const bool hasPaf = ConfigBoolean(u"globalEnablePaf");
    displayNameIsReadOnly_ = ConfigInteger(u"globalDisplayAsReadOnly") != 1;
    if (hasPaf) WritePafPrompt();
    for (const TextField& field : kTextFields) WriteTextField(field);
    if (IsBitSet(form_.shown, kCountryListBit)) WriteCountryList();
    WriteAddressType();
    WriteMain();
    if (IsBitSet(form_.shown, kCommentsBit)) WriteComments();
    WriteHidden(u"<input type=\"hidden\" id=\"EntityType\" name=\"EntityType\" value=\"",
                form_.entityType);
    Append(out_, u"<input type=\"hidden\" id=\"SysRef\" name=\"SysRef\" value=\"", form_.systemRef,
           kInputEnd, u"<input type=\"hidden\" id=\"LocRef\" name=\"LocRef\" value=\"",
           form_.locationRef, kInputEnd);
    WriteHidden(u"<input type=\"hidden\" id=\"AddValidate\" name=\"AddValidate\" value=\"",
                validator_);
    if (hasPaf) WritePafScript(includePafScript);
    return std::move(out_);
  }

 private:
  void WriteLabel(const Label& label) {
    texts_.Append(out_, kGeneralArea, label.key, label.defaultText);
  }

  template <size_t size>
  void WriteHidden(const char16_t (&opening)[size], TextView value) {
    WriteHidden(TextView(opening, size - 1), value);
  }
  void WriteHidden(TextView opening, TextView value) {
    AppendPiece(out_, opening);
    AppendHtmlEncoded(out_, value);
    AppendPiece(out_, kInputEnd);
  }

  // The label, and in the validator list the entry of a mandatory field.
  void WriteLabelOfField(const Label& label, bool mandatory, TextView validatorId,
                         const Label& validatorLabel) {
    const size_t start = out_.size();
    WriteLabel(label);
    if (!mandatory) return;
    Append(validator_, validatorId, u",");
    if (validatorLabel.key.empty()) {
      validator_.append(out_, start);
    } else {
      texts_.Append(validator_, kGeneralArea, validatorLabel.key, validatorLabel.defaultText);
    }
    AppendPiece(validator_, u"|");
  }

  void WriteTextField(const TextField& field) {
    const bool always = field.bit == 0;
    if (!always && !IsBitSet(form_.shown, field.bit)) {
      if (!field.hiddenOpening.empty()) WriteHidden(field.hiddenOpening, form_.*field.hiddenValue);
      return;
    }
    const bool mandatory = always || IsBitSet(form_.mandatory, field.bit);
    AppendPiece(out_, always ? kAlwaysMandatoryRow : mandatory ? kMandatoryRow : kOptionalRow);
    WriteLabelOfField(field.label, mandatory, field.validatorId, field.validatorLabel);
    Append(out_, kLabelToInput, field.opening);
    AppendHtmlEncoded(out_, form_.*field.value);
    const bool readOnly = field.value == &AddressForm::displayName && displayNameIsReadOnly_;
    AppendPiece(out_, readOnly ? kReadOnlyTextInputEnd : kTextInputEnd);
  }

  void WritePafPrompt() {
    Append(out_, kRowStart, kWideCellStart, kLineEnd);
    WriteLabel(kPafText);
    WriteLabel(kPafButton);
    AppendPiece(out_, kInputCellEnd);
  }

  void WriteCountryList() {
    const Text selected =
        form_.countryRef.empty() ? ToText(GetScalar(kDefaultCountrySql)) : Text(form_.countryRef);
    database::Recordset countries =
        database::Connection::Open(ComponentContext::Current().connectionString)
            ->Execute(kCountriesSql);
    if (countries.Eof()) return;
    const bool mandatory = IsBitSet(form_.mandatory, kCountryListBit);
    AppendPiece(out_, mandatory ? kMandatoryRow : kOptionalRow);
    WriteLabelOfField(kCountry, mandatory, u"Cref", {});
    Append(out_, kLabelToInput, u"     <select name=\"Cref\" id=\"Cref\" class=\"AnswerText\">");
    if (!mandatory) {
      AppendPiece(out_, u"<option value=\"-1\">");
      WriteLabel(kNoCountry);
      AppendPiece(out_, kOptionEnd);
    }
    for (; !countries.Eof(); countries.MoveNext()) {
      const Text reference = ToText(countries.Field(1));
      Append(out_, kOptionStart, reference, u"\"", reference == selected ? kSelected : TextView(),
             u">");
      texts_.Append(out_, kLookupArea, reference, ToText(countries.Field(0)));
      Append(out_, kOptionEnd, kLineEnd);
    }
    Append(out_, u"     </select>", kInputCellEnd);
  }

  void WriteAddressType() {
    if (form_.addressTypes.empty() || form_.addressType < 1) {
      Append(out_, u"<input type=\"hidden\" id=\"LocType\" name=\"LocType\" value=\"",
             form_.addressType, u"\"> ");
      return;
    }
    AppendPiece(out_, kTypeRow);
    WriteLabel(kAddressType);
    AppendPiece(out_, kLabelToInput);
    const Variant list =
        AddressDropDownList(report_, {.types = form_.addressTypes, .selected = form_.addressType});
    if (const Text* markup = list.If<Text>()) AppendPiece(out_, *markup);
    AppendPiece(out_, kInputCellEnd);
  }

  void WriteMain() {
    if (!form_.showsMain) {
      WriteHidden(u"     <input type=\"hidden\" id=\"main_loc\" name=\"main_loc\" value=\"",
                  form_.main);
      return;
    }
    AppendPiece(out_, kMainRow);
    WriteLabel(kMainLocation);
    AppendPiece(out_, kLabelToInput);
    if (form_.main == u"Y") {
      Append(out_, kTicked,
             u"     <input type=\"hidden\" id=\"main_loc\" name=\"main_loc\" value=\"Y\">");
    } else {
      AppendPiece(out_,
                  u"     <input type=\"checkbox\" class=\"AnswerCheckBox\" id=\"main_loc\" "
                  u"name=\"main_loc\" value=\"Y\">");
    }
    AppendPiece(out_, kInputCellEnd);
  }

  void WriteComments() {
    const bool mandatory = IsBitSet(form_.mandatory, kCommentsBit);
    Append(out_, kRowStart, kCellStart, mandatory ? kMandatory : kOptional, kCellEnd,
           kTopCellStart);
    WriteLabelOfField(kComments, mandatory, u"Comm", {});
    Append(out_, kLabelToInput,
           u"       <textarea rows=\"4\" class=\"AnswerText\" id=\"Comm\" name=\"Comm\">");
    AppendHtmlEncoded(out_, form_.comments);
    Append(out_, u"</textarea>", kCellEnd, u"</tr>");
  }

  void WritePafScript(bool& includePafScript) {
    if (includePafScript) AppendPiece(out_, kPafScriptFile);
    includePafScript = false;
    Append(out_, kPafScriptToPrefix, form_.pafPrefix, kPafScriptFromPrefix);
  }

  CallReport report_;
  const AddressForm& form_;
  bool displayNameIsReadOnly_ = true;
  WebTexts texts_;
  Text out_;
  Text validator_;  // the mandatory fields: id,label|id,label|
};

}  // namespace

Text BuildAddress(CallReport report, const AddressForm& form, bool& includePafScript) {
  return AddressFormWriter(report, form).Write(includePafScript);
}

}  // namespace vellum250::forms
