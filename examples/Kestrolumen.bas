Attribute VB_Name = "KestrolumenCompanion"
Option Explicit

' The companion of the add-in kestrolumen.xll: a module for the workbook Kestrolumen.xla.
'
' It does two things. It tells the add-in that the workbook is here, so that the add-in offers its three worksheet
' functions, and it computes these functions, to which the add-in hands every call:
'
'   worksheet function                  function of this module
'   NetOutputPrediction                 NetOutputPredictionVBA
'   NetOutputProbabilityOfPrediction    NetOutputProbabilityOfPredictionVBA
'   NetOutputProbabilityOfCategory      NetOutputProbabilityOfCategoryVBA
'
' The model here is a small worked example, two straight lines. Put your own in place of LinearModel.
'
' The add-in must be loaded before KestrolumenOpen runs: the names behind Lib are found among loaded libraries.

#If VBA7 Then
    ' Office 2010 and later, 32 and 64 bits. Each number has 32 bits in both, so it is a Long, never a LongPtr. An
    ' address has the width of Office: LongPtr. Declared As String, a text would be turned into narrow text on the
    ' way; the add-in wants it as it is.
    Private Declare PtrSafe Sub InitializeXlaInformationVB Lib "kestrolumen.xll" ( _
        ByVal Number1 As Long, ByVal Number2 As Long, ByVal Number3 As Long, ByRef Text1 As LongPtr, _
        ByVal Number4 As Long, ByRef Text2 As LongPtr, ByVal Number5 As Long, ByRef Text3 As LongPtr)
    Private Declare PtrSafe Sub UninitializeXlaInformation Lib "kestrolumen.xll" (ByVal Number As Long)
#Else
    ' Office 2007, 32 bits.
    Private Declare Sub InitializeXlaInformationVB Lib "kestrolumen.xll" ( _
        ByVal Number1 As Long, ByVal Number2 As Long, ByVal Number3 As Long, ByRef Text1 As Long, _
        ByVal Number4 As Long, ByRef Text2 As Long, ByVal Number5 As Long, ByRef Text3 As Long)
    Private Declare Sub UninitializeXlaInformation Lib "kestrolumen.xll" (ByVal Number As Long)
#End If

Private Removed As Boolean

' Call this from Workbook_Open of the workbook's own module, ThisWorkbook.
Public Sub KestrolumenOpen()
    Dim BookName As String, BookVersion As String, Notes As String
    BookName = ThisWorkbook.Name
    BookVersion = "1.0"
    Notes = "none"

    ' A BSTR variable holds the address of its text; the add-in takes a pointer to such a variable.
    #If VBA7 Then
        Dim NameAddress As LongPtr, VersionAddress As LongPtr, NotesAddress As LongPtr
    #Else
        Dim NameAddress As Long, VersionAddress As Long, NotesAddress As Long
    #End If
    NameAddress = StrPtr(BookName)
    VersionAddress = StrPtr(BookVersion)
    NotesAddress = StrPtr(Notes)

    InitializeXlaInformationVB 1, 0, 0, NameAddress, 0, VersionAddress, 0, NotesAddress
End Sub

' Call this from Workbook_BeforeClose.
Public Sub KestrolumenClose()
    UninitializeXlaInformation 0
    If ThisWorkbook.IsAddin Then KestrolumenReturnLater
End Sub

' Call this from Workbook_AddinUninstall: the user has unticked the workbook, and it isn't to come back.
Public Sub KestrolumenRemove()
    Removed = True
End Sub

' Call this before any other workbook closes, since all of Excel may be closing. Excel closes the add-in before it
' asks whether to save, and doesn't open it again when the user cancels. What is scheduled here runs only if Excel
' stays open; saying hello once more does no harm.
Public Sub KestrolumenReturnLater()
    If Not Removed Then Application.OnTime Now, "'" & ThisWorkbook.Name & "'!KestrolumenReturn"
End Sub

Public Sub KestrolumenReturn()
    On Error Resume Next ' the add-in may have been removed meanwhile
    KestrolumenOpen
End Sub

' The category that is the likelier one.
Public Function NetOutputPredictionVBA(Inputs As Variant, Network As Variant, Fallback As Variant, _
                                       Low As Variant, High As Variant) As Variant
    Dim Answer As Variant
    If LinearModel(Inputs, Network, Fallback, Low, High, Answer) Then
        If Answer >= 0.5 Then Answer = "yes" Else Answer = "no"
    End If
    NetOutputPredictionVBA = Answer
End Function

' The probability of that category, 0 to 1.
Public Function NetOutputProbabilityOfPredictionVBA(Inputs As Variant, Network As Variant, Fallback As Variant, _
                                                    Low As Variant, High As Variant) As Variant
    Dim Answer As Variant
    If LinearModel(Inputs, Network, Fallback, Low, High, Answer) Then
        If Answer < 0.5 Then Answer = 1 - Answer
    End If
    NetOutputProbabilityOfPredictionVBA = Answer
End Function

' The probability of a category given by its name, "yes" or "no"; #N/A for any other.
Public Function NetOutputProbabilityOfCategoryVBA(Inputs As Variant, Network As Variant, Category As Variant, _
                                                  Fallback As Variant, Low As Variant, High As Variant) As Variant
    Dim Answer As Variant
    If LinearModel(Inputs, Network, Fallback, Low, High, Answer) Then
        Select Case TextOf(Category)
            Case "yes"
            Case "no": Answer = 1 - Answer
            Case Else: Answer = CVErr(xlErrNA)
        End Select
    End If
    NetOutputProbabilityOfCategoryVBA = Answer
End Function

' The worked example: True, and in Answer the probability of "yes" from two inputs; or False, and in Answer the
' value for the cell: #VALUE! for an unknown network or a wrong number of inputs, the fallback (or #N/A) for an
' input that is no number.
Private Function LinearModel(Inputs As Variant, Network As Variant, Fallback As Variant, _
                             Low As Variant, High As Variant, ByRef Answer As Variant) As Boolean
    Const InputCount As Long = 2
    Dim Weights(1 To 2) As Double, Bias As Double, Score As Double
    Dim Cells As Collection, Lows As Collection, Highs As Collection
    Dim Number As Double, i As Long

    Weights(1) = 0.8
    Weights(2) = -0.5
    Bias = 0.1

    Set Cells = CellsOf(Inputs)
    Set Lows = CellsOf(Low)
    Set Highs = CellsOf(High)
    If TextOf(Network) <> "linear" Or Cells.Count <> InputCount Then
        Answer = CVErr(xlErrValue)
        Exit Function
    End If

    Score = Bias
    For i = 1 To InputCount
        If Not IsNumber(Cells(i)) Then
            Answer = FallbackOf(Fallback)
            Exit Function
        End If
        Number = CDbl(Cells(i))
        If Lows.Count = InputCount Then
            If IsNumber(Lows(i)) Then
                If Number < CDbl(Lows(i)) Then Number = CDbl(Lows(i))
            End If
        End If
        If Highs.Count = InputCount Then
            If IsNumber(Highs(i)) Then
                If Number > CDbl(Highs(i)) Then Number = CDbl(Highs(i))
            End If
        End If
        Score = Score + Weights(i) * Number
    Next i

    ' Beyond 700 the exponential function overflows, and the probability is 0 or 1 long before that.
    If Score > 700 Then Score = 700
    If Score < -700 Then Score = -700
    Answer = 1 / (1 + Exp(-Score))
    LinearModel = True
End Function

' The values of an argument, in order: the cells of a range, the elements of an array, or the one value. Empty for
' an argument left out.
Private Function CellsOf(Argument As Variant) As Collection
    Dim Found As New Collection
    Dim Cell As Range, Element As Variant
    If IsObject(Argument) Then
        If TypeOf Argument Is Range Then
            For Each Cell In Argument.Cells
                Found.Add Cell.Value2
            Next Cell
        End If
    ElseIf IsArray(Argument) Then
        For Each Element In Argument
            Found.Add Element
        Next Element
    ElseIf Not IsMissingArgument(Argument) Then
        Found.Add Argument
    End If
    Set CellsOf = Found
End Function

Private Function IsNumber(Value As Variant) As Boolean
    Select Case VarType(Value)
        Case vbDouble, vbSingle, vbInteger, vbLong, vbCurrency: IsNumber = True
    End Select
End Function

' A name in small letters; "" for what is no text.
Private Function TextOf(Argument As Variant) As String
    Dim Cells As Collection
    Set Cells = CellsOf(Argument)
    If Cells.Count = 1 Then
        If VarType(Cells(1)) = vbString Then TextOf = LCase$(Cells(1))
    End If
End Function

Private Function FallbackOf(Fallback As Variant) As Variant
    Dim Cells As Collection
    Set Cells = CellsOf(Fallback)
    FallbackOf = CVErr(xlErrNA)
    If Cells.Count = 1 Then
        If Not IsEmpty(Cells(1)) Then FallbackOf = Cells(1)
    End If
End Function

' An argument that the cell's formula leaves out arrives as an empty value or as the error that marks omission.
Private Function IsMissingArgument(Argument As Variant) As Boolean
    IsMissingArgument = IsEmpty(Argument) Or IsMissing(Argument)
End Function
