// The program's string table: every caption, tooltip and message by number, in US English
// and Japanese.
#include <algorithm>
#include <array>

#include "support/texts.h"

namespace dxfimport {
namespace {

struct Entry {
  int id;
  std::string_view english;
  std::string_view japanese;
};

constexpr std::array kTable = std::to_array<Entry>({
    {9, "MS Sans Serif", "MS UI Gothic"},
    {10, "8", "9"},
    {11, "8", "9"},
    {500, "OK", "OK"},
    {501, "Cancel", "キャンセル"},
    {502, "Apply", "適用"},
    {503, "Help", "ヘルプ"},
    {504, "Accept", "承認"},
    {1000, "Corvath DXF Import", "Corvath DXF インポート"},
    {1001, "About %A", "%A のバージョン情報"},
    {1002, "Version %V", "バージョン %V"},
    {1003, "DXF drawing importer and viewer for Corvath Design.",
     "Corvath Design 用の DXF 図面インポーター兼ビューアです。"},
    {1004, "Drawing Size", "図面サイズ"},
    {1005, "Landscape (Horizontal Orientation)", "横長 (水平方向)"},
    {1006, "Portrait (Vertical Orientation)", "縦長 (垂直方向)"},
    {1007, "Choose the size of the picture in pixels.", "画像のサイズをピクセル単位で選んでください。"},
    {1008, "Edit Layers", "画層の編集"},
    {1009, "On/Off", "表示/非表示"},
    {1010, "On", "表示"},
    {1011, "Off", "非表示"},
    {1012, "When Drawing", "描画時の色"},
    {1013, "User &Layer Colors", "画層の色を使用(&L)"},
    {1014, "Use &Entity Colors", "図形の色を使用(&E)"},
    {1015, "Set Layer Color...", "画層の色を設定..."},
    {1016, "Open new DXF file", "新しい DXF ファイルを開く"},
    {1017, "Resize drawing area", "描画領域のサイズを変更"},
    {1018, "Reset zoom extents", "全体表示に戻す"},
    {1019, "Zoom in", "拡大"},
    {1020, "Zoom out", "縮小"},
    {1021, "Open DXF File", "DXF ファイルを開く"},
    {1022, "DXF File", "DXF ファイル"},
    {1023, "Error: Internal data structures could not be initialized. DXF import unsuccessful.",
     "エラー: 内部データ構造を初期化できませんでした。DXF のインポートに失敗しました。"},
    {1024, "An error occurred opening the DXF file. DXF file not opened.",
     "DXF ファイルを開くときにエラーが発生しました。DXF ファイルは開かれていません。"},
    {1025, "Bitmaps (*.bmp)|*.bmp|All files (*.*)|*.*",
     "ビットマップ (*.bmp)|*.bmp|すべてのファイル (*.*)|*.*"},
    {1026, "&File", "ファイル(&F)"},
    {1027, "&Open...", "開く(&O)..."},
    {1028, "&Save As Bitmap...", "ビットマップとして保存(&S)..."},
    {1029, "E&xit and Return to Caller", "終了して呼び出し元に戻る(&X)"},
    {1030, "E&xit", "終了(&X)"},
    {1031, "&Edit", "編集(&E)"},
    {1032, "&Copy", "コピー(&C)"},
    {1033, "&Options", "オプション(&O)"},
    {1034, "Edit &Layers...", "画層の編集(&L)..."},
    {1035, "Background &Color...", "背景色(&C)..."},
    {1036, "Picture &Size...", "画像サイズ(&S)..."},
    {1037, "&Zoom", "ズーム(&Z)"},
    {1038, "&Reset Extents", "全体表示(&R)"},
    {1039, "Zoom &Larger", "拡大(&L)"},
    {1040, "Zoom &Smaller", "縮小(&S)"},
    {1041, "&Help", "ヘルプ(&H)"},
    {1042, "&Contents", "目次(&C)"},
    {1043, "&About", "バージョン情報(&A)"},
    {1044, "Layer Name", "画層名"},
    {1045, "Color", "色"},
    {1046, "Cannot edit layers. This drawing contains no layer information.",
     "画層を編集できません。この図面には画層の情報がありません。"},
    {1047, "Cannot edit layers. This drawing contains too many layers to be edited by this utility.",
     "画層を編集できません。この図面の画層は多すぎて、このユーティリティでは編集できません。"},
    {1048, "&Properties...", "プロパティ(&P)..."},
    {1049, "Error encountered.\n\nError %1: %2", "エラーが発生しました。\n\nエラー %1: %2"},
    {1050, "Error: The selected file is not recognized as a valid DXF file.",
     "エラー: 選択したファイルは有効な DXF ファイルとして認識されません。"},
    {1051, "Error: There are no entities to draw.", "エラー: 描画する図形がありません。"},
    {1052, "Error: The drawing extents were not read in correctly. Unable to draw this DXF file.",
     "エラー: 図面の範囲を正しく読み取れませんでした。この DXF ファイルは描画できません。"},
    {1053, "Specify Bitmap File Name", "ビットマップ ファイル名の指定"},
    {1054, "&Cancel Import", "インポートの取り消し(&C)"},
    {1055, "Color &Depth", "色数(&D)"},
    {1056, "&256", "&256"},
    {1057, "&16", "&16"},
    {1058, "&Mono", "モノクロ(&M)"},
    {1059, "&Default", "既定(&D)"},
    {1060, "The help file %1 was not found.", "ヘルプ ファイル %1 が見つかりません。"},
    {1061, "Le&gacy Reading Rules", "従来の読み込み規則(&G)"},
    {1062, "Line &Weights", "線の太さ(&W)"},
    {1063, "La&yout", "レイアウト(&Y)"},
    {1064, "Model", "モデル"},
    {1065, "Model space is empty; the layout %1 is shown.",
     "モデル空間が空のため、レイアウト %1 を表示しています。"},
    {1066, "The layout %1 is shown.", "レイアウト %1 を表示しています。"},
    {1067, "Cancel", "キャンセル"},
    {1068, "The drawing is incomplete: loading was stopped.", "図面は不完全です: 読み込みを中止しました。"},
    {1069, "The drawing is incomplete: drawing was stopped.", "図面は不完全です: 描画を中止しました。"},
    {1070, "Entity &Budget...", "図形数の上限(&B)..."},
    {1071,
     "Rows a drawing may hold; an insert that would pass them is left out (0: as many as a quarter of the "
     "memory holds, at most 50 million):",
     "図面が保持できる行数。これを超える挿入は省略されます (0: メモリの 4 分の 1 に収まる数、最大 5000 万):"},
    {1072, "Picture &Follows the Window", "ウィンドウに合わせて表示(&F)"},
    {1073, "S&mooth Lines", "線を滑らかに表示(&M)"},
    {1074, "&Previous View", "前の表示(&P)"},
    {1075, "Recent &Files", "最近使ったファイル(&R)"},
    {1076, "X: %1   Y: %2   Zoom: %3 %", "X: %1   Y: %2   ズーム: %3 %"},
    {1077, "Zoom &In", "中心で拡大(&I)"},
    {1078, "Write a &world file beside the bitmap (where it lies on the drawing)",
     "ビットマップの横にワールド ファイルを書く(図面上の位置)(&W)"},
    {1079, "256, the Drawing's Own &Colours", "256 色、図面の色そのまま(&C)"},
    {1080, "&Black and White Lines", "白黒の線(&B)"},
    {1081, "&Greyscale", "グレースケール(&G)"},
    {1082, "&Scale and resolution", "縮尺と解像度(&S)"},
    {1083, "Scale 1:", "縮尺 1:"},
    {1084, "Resolution (dpi):", "解像度 (dpi):"},
    {1085, "Drawing unit:", "図面の単位:"},
    {1086, "The extents at this scale: %1 x %2 pixels", "この縮尺での図面範囲: %1 x %2 ピクセル"},
    {1087,
     "At this scale the picture would be %1 x %2 pixels; the viewer draws up to %3 on a side (dxfimport "
     "render draws any size).",
     "この縮尺では %1 x %2 ピクセルになります。ビューアーは一辺 %3 まで表示できます (dxfimport render "
     "はどの大きさでも描けます)。"},
    {1088, "&Reference Folders...", "参照のフォルダー(&R)..."},
    {1089, "Folders where the images and drawings a drawing refers to are also looked for, one per line:",
     "図面が参照する画像と図面を探す追加のフォルダー (1 行に 1 つ):"},
    {1090, "&Background Look...", "背景としての表示(&B)..."},
    {1091, "Fade toward the background:", "背景色へのフェード:"},
    {1092, "Draw every ink in one colour", "すべての線を 1 色で描く"},
    {1093, "Colour:", "色:"},
    {1094, "PNG pictures (*.png)|*.png|TIFF pictures (*.tif)|*.tif",
     "PNG 画像 (*.png)|*.png|TIFF 画像 (*.tif)|*.tif"},
    {1095, "&Place it on the map (its world file in the drawing's coordinate system, a .prj and an .aux.xml)",
     "地図上に置く(図面の座標系のワールド ファイル、.prj と .aux.xml)(&P)"},
    {1096, "Save PNG and TIFF pictures on a &transparent background",
     "PNG と TIFF を透明な背景で保存する(&T)"},
});

static_assert(std::is_sorted(kTable.begin(), kTable.end(),
                             [](const Entry& a, const Entry& b) { return a.id < b.id; }));

}  // namespace

std::optional<std::string_view> StringTableEntry(int id, Language language) {
  auto it =
      std::lower_bound(kTable.begin(), kTable.end(), id, [](const Entry& e, int key) { return e.id < key; });
  if (it == kTable.end() || it->id != id) return std::nullopt;
  return language == Language::Japanese ? it->japanese : it->english;
}

}  // namespace dxfimport
