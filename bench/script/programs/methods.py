class Account:
    def open(self, start):
        self.balance = start
        self.moves = 0
        return self

    def deposit(self, amount):
        self.balance = self.balance + amount
        self.moves = self.moves + 1
        return self

    def worth(self):
        return self.balance


def main():
    i = 0
    sum = 0
    account = Account().open(0)
    while i < 300000:
        account.deposit(2).deposit(-1)
        if account.worth() > 1000:
            account.open(0)
            sum = sum + 1
        i = i + 1
    return sum + account.worth() + account.moves
